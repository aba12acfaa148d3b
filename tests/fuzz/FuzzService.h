#pragma once

// What the service harnesses share: one device root with the sample tuning file,
// one service, and one registered client, made once per process, so that every
// input runs against a service that is up (its manager initialised).

#include <android/log.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "FakeClient.h"
#include "SampleRoot.h"
#include "context/SxContextManager.h"
#include "platform/FileSystemRoot.h"
#include "service/VessaManagerService.h"

namespace vessa::fuzz {

class FuzzService {
  public:
    static FuzzService& get() {
        static FuzzService instance;  // its root folder goes at exit
        return instance;
    }

    android::VessaManagerService& service() { return *mService; }

    // Runs a request that is applied on the event thread, and waits until the
    // client has been told, so each input is done before the next.
    template <typename Post>
    void applied(Post post) {
        size_t before = mClient->updateCount();
        if (post()) mClient->waitForUpdates(before + 1);
    }

    // The input's first four bytes as a number (zeros past the end), and the rest.
    static uint32_t head(const uint8_t* data, size_t size) {
        uint32_t value = 0;
        memcpy(&value, data, size < 4 ? size : 4);
        return value;
    }

  private:
    FuzzService() {
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
        mRoot.write(SxContextManager::kDefaultTuningFile,
                    test::readFile(test::sourcePath("etc/multimedia_vessa_zan_default.xml")));
        mRoot.write(SxContextManager::kOemTuningFile,
                    test::readFile(test::sourcePath("etc/zan-extra.xml")));
        FileSystemRoot::set(mRoot.path());
        mService = new android::VessaManagerService();
        mClient = new android::test::FakeClient();
        mService->registerClient(mClient, 0, 1);
        mClient->waitForUpdates(1);
    }

    test::TempDir mRoot;
    android::sp<android::VessaManagerService> mService;
    android::sp<android::test::FakeClient> mClient;
};

}  // namespace vessa::fuzz
