#pragma once

#include <cstddef>
#include <cstdint>

namespace vessa {

// Reads a parameter batch as the effect control writes it: 32-bit native words
// [target, entry count, entries...], each entry [device, parameter id, value
// count, values...]. validate() accepts exactly that shape: a 4-byte aligned
// buffer whose size is a multiple of 4, a non-negative entry count, entries with
// non-negative value counts that stay inside the buffer, and no word left over
// after the last entry. The parser never writes to the buffer.
class EffectParamParser {
  public:
    EffectParamParser(void* data, int sizeInBytes);

    // True if the buffer is a well-formed batch; required before next().
    bool validate();
    // Positions before the first entry.
    void begin();
    // Moves to the next entry; false when there is none (or the buffer was not
    // validated). Without a current entry the entry accessors return 0 / null.
    bool next();

    int32_t getTarget() const;
    int32_t getEntryCount() const;
    uint32_t getDevice() const;
    int32_t getParameterId() const;
    int getCount() const;
    const int32_t* getValues() const;

  private:
    static constexpr size_t kHeaderWords = 2;
    static constexpr size_t kEntryHeaderWords = 3;

    static constexpr size_t kNoEntry = SIZE_MAX;

    bool isWellFormed() const;
    int32_t entryWord(size_t offset) const;

    const int32_t* mWords = nullptr;
    size_t mNumWords = 0;
    int mSizeInBytes;
    bool mValid = false;
    size_t mCurrent = kNoEntry;  // word index of the current entry's header
    size_t mNext = kHeaderWords;
};

}  // namespace vessa
