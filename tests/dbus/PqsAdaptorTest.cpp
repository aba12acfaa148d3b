#include <android/log.h>
#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <mutex>

#include "MockPqs.h"
#include "client/PqsClient.h"
#include "PrivateBus.h"
#include "dbus/PqsServer.h"
#include "platform/LogCapture.h"

namespace vessa::test {
namespace {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::Return;
using Bytes = std::vector<uint8_t>;
using namespace std::chrono_literals;

// Records each serviceDied: the cookie and the callbacks object it names.
struct DeathRecorder : android::PqsDeathRecipient {
    using Deaths = std::vector<std::pair<uint64_t, const void*>>;
    void serviceDied(uint64_t cookie, const android::wp<android::IPqsCallbacks>& who) override {
        std::lock_guard<std::mutex> guard(lock);
        deaths.emplace_back(cookie, who.promote().get());
    }
    Deaths seen() {
        std::lock_guard<std::mutex> guard(lock);
        return deaths;
    }
    std::mutex lock;
    Deaths deaths;
};

class TheDBusFrontEnd : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(bus.address().empty()) << bus.error();
        ASSERT_TRUE(server.start(bus.address(), &error)) << error;
        ASSERT_TRUE(client.connect(&error)) << error;
    }

    // Registers `who` and returns the callbacks object the service was given.
    android::sp<android::IPqsCallbacks> registerAndCapture(PqsClient& who, int type, uint32_t uid) {
        android::sp<android::IPqsCallbacks> captured;
        EXPECT_CALL(*service, registerClient(_, type, uid))
                .WillOnce([&captured](const android::sp<android::IPqsCallbacks>& callbacks, int,
                                      uint32_t) { captured = callbacks; });
        who.registerClient(type, uid);
        return captured;
    }

    PqsClient::ServiceCalls& calls() { return client.service(); }

    TempDir dir;
    PrivateBus bus{dir.path()};
    android::sp<NiceMock<MockPqs>> service = new NiceMock<MockPqs>();
    PqsServer server{service};
    PqsClient client{bus.address()};
    std::string error;
};

TEST_F(TheDBusFrontEnd, AupParamAnswerIsZeroFilledToTheAskedLengthAndBounded) {
    const Bytes request = {0, 0, 0, 1, 108, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_CALL(*service, getAupParam(_, 12, _, 16))
            .WillOnce([&request](const void* in, uint32_t, void* out, uint32_t) {
                const int32_t answer = 7;
                memcpy(out, &answer, sizeof(answer));
                return memcmp(in, request.data(), request.size()) == 0 ? 0 : -5;
            });
    Bytes expected(16, 0);
    expected[0] = 7;
    EXPECT_EQ(std::make_tuple(0, expected), calls().getAupParam(request, 16));

    // 64 KiB is the largest answer; one byte more is refused without asking the service.
    EXPECT_CALL(*service, getAupParam(_, 0, _, 64 * 1024)).WillOnce(Return(-19));
    EXPECT_EQ(-19, std::get<0>(calls().getAupParam({}, 64 * 1024)));
    LogCapture log;
    EXPECT_EQ(std::make_tuple(-22, Bytes{}), calls().getAupParam(request, 64 * 1024 + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "PqsAdaptor",
                             "getAupParam: answer length 65537 refused"));
}

TEST_F(TheDBusFrontEnd, StoredParamsAreSortedByDeviceThenId) {
    EXPECT_CALL(*service, getStoredParams(_, true, _))
            .WillOnce([](android::KeyedVector<uint32_t, AupParamCache*>* out, bool, int* count) {
                out->add(0, new AupParamCache(0x8, 5, {1}));
                out->add(1, new AupParamCache(0x2, 9, {2, 3}));
                out->add(2, new AupParamCache(0x2, 1, {}));
                *count = 3;
                return -5;
            });
    auto [status, entries] = calls().getStoredParams(true);
    EXPECT_EQ(-5, status);
    EXPECT_EQ((decltype(entries){{0x2u, 1u, {}}, {0x2u, 9u, {2, 3}}, {0x8u, 5u, {1}}}), entries);
}

TEST_F(TheDBusFrontEnd, ClientIsCalledBackAtItsPathAndSlashMeansNoCallbacks) {
    android::sp<android::IPqsCallbacks> callbacks = registerAndCapture(client, 3, 77);
    ASSERT_NE(nullptr, callbacks.get());
    const Bytes blob = {0, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0};
    EXPECT_TRUE(callbacks->onAupParamUpdate(blob.data(), blob.size()));
    EXPECT_TRUE(callbacks->onAupParamUpdate(nullptr, 0));
    for (const Bytes& expected : {blob, Bytes{}}) {
        Bytes update{9};
        EXPECT_TRUE(client.waitForUpdate([](const Bytes&) { return true; }, 5s, &update));
        EXPECT_EQ(expected, update);
    }

    // The same client and path are the same object to the service.
    EXPECT_EQ(callbacks.get(), registerAndCapture(client, 4, 77).get());
    EXPECT_CALL(*service, unregisterClient(callbacks, 4, 77));
    client.unregisterClient();

    EXPECT_CALL(*service, registerClient(android::sp<android::IPqsCallbacks>(), 0, 5));
    calls().registerClient(sdbus::ObjectPath("/"), 0, 5);
}

TEST_F(TheDBusFrontEnd, ClientLeavingTheBusIsReportedOnceToItsOwnRecipients) {
    auto other = std::make_unique<PqsClient>(bus.address());
    ASSERT_TRUE(other->connect(&error)) << error;
    android::sp<android::IPqsCallbacks> leaving = registerAndCapture(*other, 0, 10);
    android::sp<android::IPqsCallbacks> staying = registerAndCapture(client, 0, 11);
    ASSERT_TRUE(leaving != nullptr && staying != nullptr);
    android::sp<DeathRecorder> linked = new DeathRecorder(), unlinked = new DeathRecorder(),
                               stayingDeath = new DeathRecorder();
    EXPECT_TRUE(leaving->linkToDeath(linked, 42));
    EXPECT_TRUE(leaving->linkToDeath(unlinked, 43));
    EXPECT_TRUE(leaving->unlinkToDeath(unlinked));
    EXPECT_FALSE(leaving->unlinkToDeath(unlinked));
    EXPECT_TRUE(staying->linkToDeath(stayingDeath, 44));

    other.reset();  // closes its connection
    ASSERT_TRUE(eventually([&] { return !linked->seen().empty(); }));
    // Requests and the death watch share one thread: after this answer it is done.
    calls().getIntParam(0);
    EXPECT_EQ((DeathRecorder::Deaths{{42, leaving.get()}}), linked->seen());
    EXPECT_TRUE(unlinked->seen().empty());
    EXPECT_TRUE(stayingDeath->seen().empty());
    const uint8_t bytes[] = {1};
    EXPECT_FALSE(leaving->onAupParamUpdate(bytes, 1));
    EXPECT_TRUE(staying->onAupParamUpdate(bytes, 1));
}

// The service calls clients back holding its lock, and registerClient waits for
// that lock on the bus thread. A callback must therefore never need the bus
// thread, or both would wait for each other.
TEST_F(TheDBusFrontEnd, CallbacksUnderTheServiceLockDoNotWaitForABlockedRequest) {
    std::mutex serviceLock;
    android::sp<android::IPqsCallbacks> callbacks;
    EXPECT_CALL(*service, registerClient(_, _, _))
            .WillRepeatedly([&](const android::sp<android::IPqsCallbacks>& c, int, uint32_t uid) {
                std::lock_guard<std::mutex> guard(serviceLock);
                if (uid == 1) callbacks = c;
            });
    client.registerClient(0, 1);
    ASSERT_NE(nullptr, callbacks.get());

    PqsClient second(bus.address());
    ASSERT_TRUE(second.connect(&error)) << error;
    std::unique_lock<std::mutex> held(serviceLock);
    auto registration = std::async(std::launch::async, [&second] { second.registerClient(0, 2); });
    // Give the bus thread time to reach the lock inside the handler.
    std::this_thread::sleep_for(100ms);
    auto fanOut = std::async(std::launch::async, [&callbacks] {
        const uint8_t bytes[] = {0, 0, 0, 10, 1, 0, 0, 0, 1, 0, 0, 0};
        bool sent = true;
        for (int i = 0; i < 20; ++i) sent = callbacks->onAupParamUpdate(bytes, 12) && sent;
        return sent;
    });
    bool finished = fanOut.wait_for(5s) == std::future_status::ready;
    held.unlock();
    ASSERT_TRUE(finished) << "a callback waited for the bus thread";
    EXPECT_TRUE(fanOut.get());
    EXPECT_EQ(std::future_status::ready, registration.wait_for(5s));
    EXPECT_TRUE(client.waitForUpdate([](const Bytes& b) { return b.size() == 12; }, 5s));
}

}  // namespace
}  // namespace vessa::test
