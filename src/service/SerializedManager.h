#pragma once

#include <memory>
#include <mutex>

#include "manager/SxManager.h"

namespace android {

// The one rule of the audio state: one request touches it at a time.
//
// Behind the manager lie the context, the provider and its database, the effect
// controller, its translators and the effect handle. None of them locks for itself
// (the context's own lock only covers its notifications), yet several threads reach
// them: bus threads answering reads, the event thread applying posted changes,
// "RLTF" reloading tunings on a bus thread, the first registration initialising, an
// ordinary client's departure saving, and dump reading. Each of them reaches the
// manager only through lock() and keeps the access for the whole request, several
// manager calls included, so a reader sees the state before a change or after it,
// never in between, and no two threads ever share a record or a database handle.
//
// Lock order: the service's client lock may be held when this one is taken (an
// ordinary client leaving saves), never the reverse; clients are called back only
// after the access is released. A plain mutex, not a reader-writer lock: reads
// write too (parameter look-ups create empty entries), and the bus delivers
// requests on one thread anyway, so there are no readers to run side by side.
class SerializedManager {
  public:
    // Exclusive use of the manager until it goes out of scope.
    class Access {
      public:
        vessa::SxManager* operator->() const { return mManager; }
        vessa::SxManager& operator*() const { return *mManager; }

      private:
        friend class SerializedManager;
        Access(std::mutex& mutex, vessa::SxManager* manager) : mLock(mutex), mManager(manager) {}

        std::unique_lock<std::mutex> mLock;
        vessa::SxManager* mManager;
    };

    SerializedManager() : mManager(std::make_unique<vessa::SxManager>()) {}
    SerializedManager(const SerializedManager&) = delete;
    SerializedManager& operator=(const SerializedManager&) = delete;

    Access lock() { return Access(mMutex, mManager.get()); }

  private:
    std::mutex mMutex;
    std::unique_ptr<vessa::SxManager> mManager;
};

}  // namespace android
