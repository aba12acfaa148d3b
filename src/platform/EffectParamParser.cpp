#include "platform/EffectParamParser.h"

#include <cstdint>

namespace vessa {

EffectParamParser::EffectParamParser(void* data, int sizeInBytes)
    : mWords(static_cast<const int32_t*>(data)), mSizeInBytes(sizeInBytes) {}

bool EffectParamParser::isWellFormed() const {
    if (mWords == nullptr || mSizeInBytes < 0 || mSizeInBytes % 4 != 0) return false;
    if (reinterpret_cast<uintptr_t>(mWords) % alignof(int32_t) != 0) return false;
    const size_t numWords = static_cast<size_t>(mSizeInBytes) / 4;
    if (numWords < kHeaderWords || mWords[1] < 0) return false;
    size_t pos = kHeaderWords;
    for (int32_t entry = 0; entry < mWords[1]; ++entry) {
        if (numWords - pos < kEntryHeaderWords) return false;
        const int32_t count = mWords[pos + 2];
        pos += kEntryHeaderWords;
        if (count < 0 || static_cast<size_t>(count) > numWords - pos) return false;
        pos += static_cast<size_t>(count);
    }
    return pos == numWords;
}

bool EffectParamParser::validate() {
    mValid = isWellFormed();
    mNumWords = mValid ? static_cast<size_t>(mSizeInBytes) / 4 : 0;
    begin();
    return mValid;
}

void EffectParamParser::begin() {
    mCurrent = kNoEntry;
    mNext = kHeaderWords;
}

bool EffectParamParser::next() {
    if (!mValid || mNext >= mNumWords) {
        mCurrent = kNoEntry;
        return false;
    }
    mCurrent = mNext;
    mNext = mCurrent + kEntryHeaderWords + static_cast<size_t>(mWords[mCurrent + 2]);
    return true;
}

int32_t EffectParamParser::getTarget() const {
    return mValid ? mWords[0] : 0;
}

int32_t EffectParamParser::getEntryCount() const {
    return mValid ? mWords[1] : 0;
}

int32_t EffectParamParser::entryWord(size_t offset) const {
    return mCurrent == kNoEntry ? 0 : mWords[mCurrent + offset];
}

uint32_t EffectParamParser::getDevice() const {
    return static_cast<uint32_t>(entryWord(0));
}

int32_t EffectParamParser::getParameterId() const {
    return entryWord(1);
}

int EffectParamParser::getCount() const {
    return entryWord(2);
}

const int32_t* EffectParamParser::getValues() const {
    return mCurrent == kNoEntry ? nullptr : mWords + mCurrent + kEntryHeaderWords;
}

}  // namespace vessa
