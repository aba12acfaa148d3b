#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>

#include "PrivateBus.h"
#include "client/PqsClient.h"
#include "dbus/PqsServer.h"
#include "platform/LogCapture.h"
#include "service/VessaManagerService.h"

namespace vessa::test {
namespace {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::StrictMock;
using ::testing::Truly;
using Bytes = std::vector<uint8_t>;
using namespace std::chrono_literals;

// The service with the calls these tests script mocked; the real one answers the
// rest (a fresh service: neutral answers).
class MockPqs : public android::VessaManagerService {
  public:
    MOCK_METHOD(int, getAupParam, (const void*, uint32_t, void*, uint32_t), (override));
    MOCK_METHOD(void, registerClient, (const android::sp<android::IPqsCallbacks>&, int, uint32_t),
                (override));
    MOCK_METHOD(void, unregisterClient, (const android::sp<android::IPqsCallbacks>&, int, uint32_t),
                (override));
};

struct MockRecipient : android::PqsDeathRecipient {
    MOCK_METHOD(void, serviceDied, (uint64_t, const android::wp<android::IPqsCallbacks>&),
                (override));
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

    TempDir dir;
    PrivateBus bus{dir.path()};
    android::sp<NiceMock<MockPqs>> service = new NiceMock<MockPqs>();
    PqsServer server{service};
    PqsClient client{bus.address()};
    std::string error;
};

// What the service answers is zero-filled to the asked length (see the end-to-end
// tests); 64 KiB is the largest answer, and one byte more is refused without
// asking the service.
TEST_F(TheDBusFrontEnd, AupParamAnswerIsBoundedTo64KiB) {
    EXPECT_CALL(*service, getAupParam(_, 0, _, 64 * 1024)).WillOnce(Return(-19));
    EXPECT_EQ(-19, std::get<0>(client.service().getAupParam({}, 64 * 1024)));
    LogCapture log;
    EXPECT_EQ(std::make_tuple(-22, Bytes{}),
              client.service().getAupParam({0, 0, 0, 1}, 64 * 1024 + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "PqsAdaptor",
                             "getAupParam: answer length 65537 refused"));
}

// Updates reach the client at its callbacks path (see the callbacks test below).
TEST_F(TheDBusFrontEnd, ClientAndPathAreOneObjectToTheServiceAndSlashMeansNoCallbacks) {
    android::sp<android::IPqsCallbacks> callbacks = registerAndCapture(client, 3, 77);
    ASSERT_NE(nullptr, callbacks.get());
    EXPECT_EQ(callbacks.get(), registerAndCapture(client, 4, 77).get());
    EXPECT_CALL(*service, unregisterClient(callbacks, 4, 77));
    client.unregisterClient();

    EXPECT_CALL(*service, registerClient(android::sp<android::IPqsCallbacks>(), 0, 5));
    client.service().registerClient(sdbus::ObjectPath("/"), 0, 5);
}

TEST_F(TheDBusFrontEnd, ClientLeavingTheBusIsReportedOnceToItsOwnRecipients) {
    auto other = std::make_unique<PqsClient>(bus.address());
    ASSERT_TRUE(other->connect(&error)) << error;
    android::sp<android::IPqsCallbacks> leaving = registerAndCapture(*other, 0, 10);
    android::sp<android::IPqsCallbacks> staying = registerAndCapture(client, 0, 11);
    ASSERT_TRUE(leaving != nullptr && staying != nullptr);
    // Strict: a death reported twice, or to another client's recipient, fails.
    android::sp<StrictMock<MockRecipient>> linked = new StrictMock<MockRecipient>(),
                                           unlinked = new StrictMock<MockRecipient>(),
                                           stayingDeath = new StrictMock<MockRecipient>();
    std::atomic<bool> died{false};
    EXPECT_CALL(*linked, serviceDied(42, Truly([&leaving](const auto& who) {
                                         return who.promote() == leaving;
                                     })))
            .WillOnce([&died] { died = true; });
    EXPECT_TRUE(leaving->linkToDeath(linked, 42));
    EXPECT_TRUE(leaving->linkToDeath(unlinked, 43));
    EXPECT_TRUE(leaving->unlinkToDeath(unlinked));
    EXPECT_FALSE(leaving->unlinkToDeath(unlinked));
    EXPECT_TRUE(staying->linkToDeath(stayingDeath, 44));

    other.reset();  // closes its connection
    ASSERT_TRUE(eventually([&] { return died.load(); }));
    // Requests and the death watch share one thread: after this answer it is done.
    client.service().getIntParam(0);
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
