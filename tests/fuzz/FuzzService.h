#pragma once

// What the service harnesses share: one device root with both sample tuning files,
// one service, and one registered client, made once per process, so that every
// input runs against a service that is up (its manager initialised).

#include <android/log.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "FakeClient.h"
#include "SampleRoot.h"
#include "service/VessaManagerService.h"

namespace vessa::fuzz {

class FuzzService {
  public:
    static FuzzService& get() {
        static FuzzService instance;  // its root folder goes at exit
        return instance;
    }

    // Runs a request that is applied on the event thread, and waits until the
    // client has been told, so each input is done before the next.
    template <typename Post>
    void applied(Post post) {
        size_t before = client->updateCount();
        if (post()) client->waitForUpdates(before + 1);
    }

    test::SampleRoot root;
    android::sp<android::VessaManagerService> service;
    android::sp<android::test::FakeClient> client = new android::test::FakeClient();

  private:
    FuzzService() {
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
        root.installOem(root.sampleOem());
        service = new android::VessaManagerService();
        service->registerClient(client, 0, 1);
        client->waitForUpdates(1);
    }
};

// Takes the input's first four bytes as a number (zeros past the end), leaving the rest.
inline uint32_t takeHead(const uint8_t*& data, size_t& size) {
    uint32_t head = 0;
    const size_t taken = std::min<size_t>(size, 4);
    memcpy(&head, data, taken);
    data += taken, size -= taken;
    return head;
}

}  // namespace vessa::fuzz
