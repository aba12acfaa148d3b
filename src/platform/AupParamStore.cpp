#define LOG_TAG "AupParamStore"

#include "platform/AupParamStore.h"

#include <errno.h>
#include <log/log.h>

#include "platform/LogRepeats.h"

ANDROID_SINGLETON_STATIC_INSTANCE(vessa::AupParamStore)

namespace vessa {

namespace {
// A client writing in a loop must not write the log full.
LogRepeats sRefusals(LOG_TAG, ANDROID_LOG_ERROR);
}  // namespace

AupParamStore::Batch::Batch(AupParamStore& store) : mStore(store) {
    mStore.mLock.lock();
    mStore.mInBatch = true;
}

AupParamStore::Batch::~Batch() {
    mStore.mInBatch = false;
    mStore.mLock.unlock();
}

int AupParamStore::setParam(uint32_t device, int32_t parameterId, const int32_t* values,
                            int count) {
    if (count < 0 || (count > 0 && values == nullptr)) return -EINVAL;
    if (count > kMaxValues) {
        if (sRefusals.admit("setParam refused: too many values"))
            ALOGE("setParam(0x%x, 0x%x): %d values refused, the limit is %d", device,
                  static_cast<uint32_t>(parameterId), count, kMaxValues);
        return -E2BIG;
    }
    std::lock_guard<std::recursive_mutex> lock(mLock);
    Key key(device, static_cast<uint32_t>(parameterId));
    auto found = mSlots.find(key);
    if (found == mSlots.end()) {
        size_t limit = mInBatch ? kMaxEntries : kMaxEntries - kReservedForBatches;
        if (mSlots.size() >= limit) {
            if (sRefusals.admit("setParam refused: the store is full"))
                ALOGE("setParam(0x%x, 0x%x): refused, the store is full (%zu entries)", device,
                      static_cast<uint32_t>(parameterId), mSlots.size());
            return -ENOSPC;
        }
        found = mSlots.emplace(key, Slot()).first;
    }
    Slot& slot = found->second;
    slot.pending.assign(values, values + count);
    if (!slot.hasPending) {
        slot.hasPending = true;
        mPendingSlots.push_back(&slot);
        mPendingKeys.push_back(key);
    }
    return 0;
}

int AupParamStore::commitChange() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    for (Slot* slot : mPendingSlots) {
        // Swapping keeps both buffers' capacity for the next batch.
        slot->committed.swap(slot->pending);
        slot->hasCommitted = true;
        slot->hasPending = false;
    }
    mPendingSlots.clear();
    // Swapped, not copied: both vectors keep their capacity for the next batch.
    mLastCommitKeys.swap(mPendingKeys);
    mPendingKeys.clear();
    ++mCommitCount;
    return 0;
}

template <typename Visit>
void AupParamStore::forEachStored(bool committed, Visit visit) const {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    for (const auto& [key, slot] : mSlots) {
        if (committed ? slot.hasCommitted : slot.hasPending) {
            visit(key, committed ? slot.committed : slot.pending);
        }
    }
}

int AupParamStore::getStoredParams(android::KeyedVector<uint32_t, AupParamCache*>* out,
                                   bool committed, int* count) const {
    if (out == nullptr || !out->isEmpty()) return -EINVAL;
    uint32_t rank = 0;
    forEachStored(committed, [&](const Key& key, const std::vector<int32_t>& values) {
        out->add(rank++, new AupParamCache(key.first, key.second, values));
    });
    if (count != nullptr) *count = static_cast<int>(rank);
    return 0;
}

void AupParamStore::releaseStoredParams(android::KeyedVector<uint32_t, AupParamCache*>* params) {
    if (params == nullptr) return;
    for (size_t i = 0; i < params->size(); ++i) delete params->valueAt(i);
    params->clear();
}

std::vector<AupParamCache> AupParamStore::storedParams(bool committed) const {
    std::vector<AupParamCache> out;
    forEachStored(committed, [&](const Key& key, const std::vector<int32_t>& values) {
        out.emplace_back(key.first, key.second, values);
    });
    return out;
}

std::vector<AupParamCache> AupParamStore::lastCommit() const {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    std::vector<AupParamCache> out;
    out.reserve(mLastCommitKeys.size());
    for (const Key& key : mLastCommitKeys) {
        out.emplace_back(key.first, key.second, mSlots.at(key).committed);
    }
    return out;
}

uint64_t AupParamStore::getCommitCount() const {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    return mCommitCount;
}

void AupParamStore::reset() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    mSlots.clear();
    mPendingSlots.clear();
    mPendingKeys.clear();
    mLastCommitKeys.clear();
    mCommitCount = 0;
}

}  // namespace vessa
