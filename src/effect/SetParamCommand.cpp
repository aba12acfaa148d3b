#include "effect/SetParamCommand.h"

#include "effect/AupEffect.h"

namespace vessa {

namespace {
constexpr size_t kEntryCountWord = 1;
// Room for a full resend of one device without growing the buffer.
constexpr size_t kInitialCapacity = 1024;
// An empty run of further parts, for the forms that have a single one.
const SetParamCommand::Part* const kNoParts = nullptr;
}  // namespace

SetParamCommand::SetParamCommand(int target) : mBuffer(mOwnBuffer) {
    mBuffer.reserve(kInitialCapacity);
    writeHeader(target);
}

SetParamCommand::SetParamCommand(int target, std::vector<int>& buffer) : mBuffer(buffer) {
    writeHeader(target);
}

void SetParamCommand::writeHeader(int target) {
    // assign() keeps the capacity and drops whatever the buffer held.
    mBuffer.assign({target, 0});
}

SetParamCommand::~SetParamCommand() = default;

int SetParamCommand::execute(AupEffect& effect) {
    if (mEntryCount == 0) return 0;
    mBuffer[kEntryCountWord] = mEntryCount;
    return effect.send(0, mBuffer);
}

template <typename Iterator>
void SetParamCommand::appendEntry(AupParameter p, const Part& first, Iterator begin, Iterator end) {
    size_t count = first.size();
    for (Iterator it = begin; it != end; ++it) count += Part(*it).size();
    mBuffer.push_back(mDeviceId);
    mBuffer.push_back(aupParameterId(p));
    mBuffer.push_back(static_cast<int>(count));
    mBuffer.insert(mBuffer.end(), first.data(), first.data() + first.size());
    for (Iterator it = begin; it != end; ++it) {
        const Part part(*it);
        mBuffer.insert(mBuffer.end(), part.data(), part.data() + part.size());
    }
    ++mEntryCount;
}

void SetParamCommand::add(AupParameter p, int value) {
    appendEntry(p, Part(value), kNoParts, kNoParts);
}

void SetParamCommand::add(AupParameter p, const std::vector<int>* values) {
    appendEntry(p, Part(values), kNoParts, kNoParts);
}

void SetParamCommand::add(AupParameter p, std::initializer_list<const std::vector<int>*> parts) {
    appendEntry(p, Part(), parts.begin(), parts.end());
}

void SetParamCommand::add(AupParameter p, int lead,
                          std::initializer_list<const std::vector<int>*> parts) {
    appendEntry(p, Part(lead), parts.begin(), parts.end());
}

void SetParamCommand::addParts(AupParameter p, std::initializer_list<Part> parts) {
    appendEntry(p, Part(), parts.begin(), parts.end());
}

}  // namespace vessa
