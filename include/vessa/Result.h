#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vessa::client {

// Why a call did not do what it was asked.
struct Error {
    enum class Code {
        NOT_RUNNING,    // no service owns its name on this bus
        NO_REPLY,       // the service did not answer in time
        ACCESS_DENIED,  // the bus policy refused the call
        REFUSED,        // the service answered with a failure status, or ignored the change
        INVALID,  // the caller's argument (an id, a port, a name) is not one the service knows
        BUS,      // any other bus failure
    };
    Code code = Code::BUS;
    std::string message;  // one sentence, fit for a person
};

// A value or an Error. No call of the client API throws.
template <typename T>
class Result {
  public:
    Result(T value) : mValue(std::move(value)) {}
    Result(Error error) : mError(std::move(error)) {}

    bool ok() const { return mValue.has_value(); }
    explicit operator bool() const { return ok(); }
    // Only when ok().
    const T& value() const { return *mValue; }
    T& value() { return *mValue; }
    T valueOr(T fallback) const { return ok() ? *mValue : std::move(fallback); }
    // Only when !ok().
    const Error& error() const { return mError; }

  private:
    std::optional<T> mValue;
    Error mError;
};

// The result of a call that gives nothing back.
template <>
class Result<void> {
  public:
    Result() = default;
    Result(Error error) : mFailed(true), mError(std::move(error)) {}

    bool ok() const { return !mFailed; }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return mError; }

  private:
    bool mFailed = false;
    Error mError;
};

}  // namespace vessa::client
