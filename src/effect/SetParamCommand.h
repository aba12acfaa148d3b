#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "effect/AupParameter.h"

namespace vessa {

class AupEffect;

// One batch of effect parameter values, sent to the effect in one piece so the
// store applies it in one commit. The buffer is a run of 32-bit words:
//   [target, entry count, entries...], each entry [device, id, n, n values...].
// The entry count word stays 0 until execute() writes it just before sending.
class SetParamCommand {
  public:
    // A run of values that becomes part of an entry: a whole vector or one int.
    // It only points at the values, which must outlive the add call.
    class Part {
      public:
        Part() : mData(nullptr), mSize(0) {}
        Part(const std::vector<int>& values) : mData(values.data()), mSize(values.size()) {}
        Part(const std::vector<int>* values) : Part(*values) {}
        Part(const int& value) : mData(&value), mSize(1) {}
        const int* data() const { return mData; }
        size_t size() const { return mSize; }

      private:
        const int* mData;
        size_t mSize;
    };

    explicit SetParamCommand(int target);
    // Writes the batch into `buffer`, which the caller owns and reuses from batch to
    // batch: it is emptied first, keeping its capacity, so a batch allocates nothing
    // once the buffer has grown, and nothing of an earlier batch remains in it.
    SetParamCommand(int target, std::vector<int>& buffer);
    SetParamCommand(const SetParamCommand&) = delete;
    SetParamCommand& operator=(const SetParamCommand&) = delete;
    virtual int execute(AupEffect& effect);
    virtual ~SetParamCommand();

    // The device of the entries added from now on; earlier entries keep theirs.
    void setDeviceId(int device) { mDeviceId = device; }
    int getDeviceId() const { return mDeviceId; }
    int getEntryCount() const { return mEntryCount; }
    const std::vector<int>& buffer() const { return mBuffer; }

    // One value.
    void add(AupParameter p, int value);
    // The vector's values.
    void add(AupParameter p, const std::vector<int>* values);
    // The vectors' values concatenated in list order.
    void add(AupParameter p, std::initializer_list<const std::vector<int>*> parts);
    // `lead` followed by the vectors' values (a band count before band tables).
    void add(AupParameter p, int lead, std::initializer_list<const std::vector<int>*> parts);
    // The general form: vectors and single values concatenated in list order.
    void addParts(AupParameter p, std::initializer_list<Part> parts);

  private:
    // The two header words: the target and the entry count, 0 until execute().
    void writeHeader(int target);
    // Appends one entry: `first` (possibly empty) followed by the parts in [begin, end).
    template <typename Iterator>
    void appendEntry(AupParameter p, const Part& first, Iterator begin, Iterator end);

    int mDeviceId = -1;
    int mEntryCount = 0;
    std::vector<int> mOwnBuffer;  // unused when the caller lends a buffer
    std::vector<int>& mBuffer;
};

}  // namespace vessa
