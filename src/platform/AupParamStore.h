#pragma once

#include <utils/KeyedVector.h>
#include <utils/Singleton.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/AupParamCache.h"

namespace vessa {

// The effect's shared parameter store: the last values per (device, parameter
// id). Values written by setParam stay pending, invisible to the effect, until
// commitChange publishes everything pending at once, so a batch is seen whole
// or not at all. One instance per process; every operation takes the store's
// lock, so binder threads and the event thread may call it concurrently.
//
// The store is bounded: at most kMaxValues values per entry and kMaxEntries
// entries, of which clients writing directly may fill all but
// kReservedForBatches, so the effect's own codes (84 per device, 7 devices)
// always fit. A listing therefore stays far below a bus message's limit.
class AupParamStore : public android::Singleton<AupParamStore> {
  public:
    static constexpr int kMaxValues = 1024;
    static constexpr size_t kMaxEntries = 2048;
    static constexpr size_t kReservedForBatches = 1024;

    // Holds the store for one writer's batch: while it lives, setParam and
    // commitChange from other threads wait, so the batch's commit publishes it
    // whole and no one else's commit can publish part of it.
    class Batch {
      public:
        explicit Batch(AupParamStore& store);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

      private:
        AupParamStore& mStore;
    };

    // Stores `count` values for (device, parameterId) as pending; a later write
    // of the same pair before the commit replaces the earlier one.
    // 0; -EINVAL for a negative count or null values with a positive count;
    // -E2BIG for more than kMaxValues values; -ENOSPC for a new entry in a full
    // store. The last two log an error line.
    int setParam(uint32_t device, int32_t parameterId, const int32_t* values, int count);

    // Publishes every pending value. Always 0.
    int commitChange();

    // Fills `out` with newly allocated caches, one per stored pair, keyed by
    // their position 0..n-1 in ascending (device, parameter id) order: a device
    // and an id do not fit together in one 32-bit key, so the key is the rank
    // and each cache carries its own device and id. `committed` true lists the
    // published values; false lists the values pending since the last commit.
    // `out` must be empty; the caller owns the caches (releaseStoredParams frees
    // them). `count` (may be null) receives the number of entries.
    // 0, or -22 when `out` is null or not empty.
    int getStoredParams(android::KeyedVector<uint32_t, AupParamCache*>* out, bool committed,
                        int* count) const;
    // Deletes the caches of a getStoredParams result and empties it.
    static void releaseStoredParams(android::KeyedVector<uint32_t, AupParamCache*>* params);

    // The same listing by value, sorted by device then parameter id.
    std::vector<AupParamCache> storedParams(bool committed) const;

    // What the last commit published: one entry per (device, id) written in
    // that batch, in the order of first write, with the published values.
    std::vector<AupParamCache> lastCommit() const;
    // Number of commitChange calls since start (or since reset).
    uint64_t getCommitCount() const;
    // Forgets every value and the commit count (tests and tools).
    void reset();

  private:
    friend class android::Singleton<AupParamStore>;
    AupParamStore() = default;

    using Key = std::pair<uint32_t, uint32_t>;  // (device, parameter id)
    struct Slot {
        std::vector<int32_t> committed;
        std::vector<int32_t> pending;
        bool hasCommitted = false;
        bool hasPending = false;
    };

    // Calls visit(key, values) for each listed slot in key order.
    template <typename Visit>
    void forEachStored(bool committed, Visit visit) const;

    // Recursive: a Batch holds it while its owner calls setParam and commitChange.
    mutable std::recursive_mutex mLock;
    // True while a Batch holds the lock (only its owner can see it so).
    bool mInBatch = false;
    std::map<Key, Slot> mSlots;
    // Slots written since the last commit; map nodes never move, so the
    // pointers stay valid, and a commit touches only what changed.
    std::vector<Slot*> mPendingSlots;
    std::vector<Key> mPendingKeys;
    std::vector<Key> mLastCommitKeys;
    uint64_t mCommitCount = 0;
};

}  // namespace vessa
