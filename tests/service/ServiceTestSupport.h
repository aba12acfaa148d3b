#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "FakeClient.h"
#include "SampleRoot.h"
#include "protocol/PqsProtocol.h"
#include "service/VessaManagerService.h"

namespace android::test {

using Bytes = vessa::PqsProtocol::Bytes;
using vessa::PqsProtocol;
using vessa::client::IntCode;

// The one device root of the service tests, installed before the first test of the
// binary; every test file asks for it here, so it is registered once.
inline vessa::test::SampleRootEnvironment& serviceRoot() {
    static auto* environment = static_cast<vessa::test::SampleRootEnvironment*>(
            ::testing::AddGlobalTestEnvironment(new vessa::test::SampleRootEnvironment()));
    return *environment;
}

// A fresh service that no client has started yet.
class AFreshService : public ::testing::Test {
  protected:
    int64_t intParam(IntCode code) { return service->getIntParam(static_cast<uint32_t>(code)); }
    // The words a query answers, in a buffer of `words` words pre-filled with -7.
    std::vector<int32_t> ask(const Bytes& request, size_t words = 1) {
        std::vector<int32_t> out(words, -7);
        EXPECT_EQ(0, service->getAupParam(request.data(), request.size(), out.data(), words * 4));
        return out;
    }
    int32_t askWord(PqsProtocol::QueryCommand command, int32_t profile = 0, int32_t id = 0) {
        return ask(PqsProtocol::query(command, profile, id))[0];
    }
    // Registers and waits until the registration notice has gone round.
    void registerAndSettle(const sp<FakeClient>& client, int type, uint32_t uid) {
        size_t before = client->updateCount();
        service->registerClient(client, type, uid);
        ASSERT_TRUE(client->waitForUpdates(before + 1));
    }
    // Posts a blob and returns what `client` was sent for it.
    Bytes apply(const sp<FakeClient>& client, const Bytes& blob) {
        size_t before = client->updateCount();
        EXPECT_EQ(0, service->setAupParam(blob.data(), blob.size()));
        EXPECT_TRUE(client->waitForUpdates(before + 1));
        return client->updates().back();
    }
    // What dump writes (to a file, which never makes it wait).
    std::string dumpText() {
        std::FILE* file = std::tmpfile();
        service->dump(fileno(file), {});
        std::string text = vessa::test::readFile("/proc/self/fd/" + std::to_string(fileno(file)));
        std::fclose(file);
        return text;
    }

    sp<VessaManagerService> service = new VessaManagerService();
};

// A service started by one ordinary client, which leaves (and so saves) at the end.
class AServiceWithAClient : public AFreshService {
  protected:
    void SetUp() override { registerAndSettle(ui, 0, kUid); }
    void TearDown() override { service->unregisterClient(ui, 0, kUid); }

    static constexpr uint32_t kUid = 100;
    sp<FakeClient> ui = new FakeClient();
};

}  // namespace android::test
