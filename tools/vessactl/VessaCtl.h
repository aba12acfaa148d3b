#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "vessa/Client.h"

namespace vessa {

// The commands of vessactl, run against one connected client: names in, names out,
// and every change reported as what the service stored, clamped or refused.
class VessaCtl {
  public:
    VessaCtl(client::Client& client, const Invocation& invocation, std::ostream& out,
             std::ostream& err);

    // Runs the invocation's command; returns the exit status.
    int run();
    // Decimal only: "010" is ten, "0x10" and "1e3" are not numbers.
    static bool parseDecimal(const std::string& text, long min, long max, long* out);

  private:
    int status();
    int profiles();
    int switchEffect(bool on);
    int selectProfile();
    int resetProfile();
    int get(bool onePort);
    int set(bool onePort);
    int devices();
    int selectDevice();
    int reload();
    int dump();
    int watch();
    int store();

    // Each resolves a name or a number from the command line; on failure it has
    // printed why and set mStatus.
    bool resolveProfile(int* profile);
    bool resolveSetting(const client::Setting** setting);
    bool resolvePort(int* port);
    std::vector<std::string> profileNames();

    std::string profileText(int profile);
    std::string settingText(const client::Setting& setting, int port);
    std::string intParamText(const client::IntCodeInfo& code, int64_t value);
    std::vector<int32_t> geqFrequencies();
    // Why the service stored `stored` rather than `requested`; empty when it clamped.
    std::string refusal(const client::Setting& setting, int port,
                        const std::vector<int32_t>& requested, const std::vector<int32_t>& stored);

    void print(const nlohmann::ordered_json& document);
    int fail(const std::string& message);
    int fail(const client::Error& error);
    int usage(const std::string& message);

    client::Client& mClient;
    const Invocation& mInvocation;
    std::ostream& mOut;
    std::ostream& mErr;
    int mStatus = CommandLine::kOk;
};

}  // namespace vessa
