#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <condition_variable>
#include <cstring>
#include <future>
#include <mutex>
#include <thread>

#include "MockPqs.h"
#include "PqsClient.h"
#include "PrivateBus.h"
#include "TempDir.h"
#include "dbus/PqsNames.h"
#include "dbus/PqsServer.h"
#include "platform/LogCapture.h"
#include "service/FourCC.h"

namespace vessa::test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::Invoke;
using ::testing::NiceMock;
using ::testing::Return;
using Bytes = std::vector<uint8_t>;
using namespace std::chrono_literals;

// Hears serviceDied, as the service's client records do.
class DeathRecorder : public android::PqsDeathRecipient {
  public:
    void serviceDied(uint64_t cookie, const android::wp<android::IPqsCallbacks>& who) override {
        std::lock_guard<std::mutex> guard(mLock);
        mCookies.push_back(cookie);
        mWho = who;
        mDied.notify_all();
    }
    bool waitForDeath(std::chrono::milliseconds timeout) {
        std::unique_lock<std::mutex> lock(mLock);
        return mDied.wait_for(lock, timeout, [this] { return !mCookies.empty(); });
    }
    std::vector<uint64_t> cookies() {
        std::lock_guard<std::mutex> guard(mLock);
        return mCookies;
    }
    android::wp<android::IPqsCallbacks> who() {
        std::lock_guard<std::mutex> guard(mLock);
        return mWho;
    }

  private:
    std::mutex mLock;
    std::condition_variable mDied;
    std::vector<uint64_t> mCookies;
    android::wp<android::IPqsCallbacks> mWho;
};

class PqsFrontEndTest : public ::testing::Test {
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

TEST_F(PqsFrontEndTest, RequestsReachTheServiceAndAnswersComeBack) {
    EXPECT_CALL(*service, getIntParam(android::fourCC("DCCP"))).WillOnce(Return(1));
    EXPECT_CALL(*service, getIntParam(android::fourCC("LCTM"))).WillOnce(Return(-1000));
    EXPECT_CALL(*service, setIntParam(android::fourCC("RLTF"), 7));
    EXPECT_CALL(*service, getProfileName(2)).WillOnce(Return("Music"));
    EXPECT_CALL(*service, getDefaultXmlFormatVersion()).WillOnce(Return(1002003));
    EXPECT_CALL(*service, getSelectedTuningDevice(3)).WillOnce(Return("phones_b"));
    EXPECT_CALL(*service, getAvailableTuningDevicesLen(6)).WillOnce(Return(-1));
    EXPECT_CALL(*service, getDialogEnhancerAmount()).WillOnce(Return(9));
    EXPECT_CALL(*service, isSpeakerPortraitMode()).WillOnce(Return(true));
    EXPECT_CALL(*service, setAupParam(_, 12)).WillOnce([](const void* data, uint32_t) {
        return static_cast<const uint8_t*>(data)[3] == 10 ? 0 : -1;
    });

    EXPECT_EQ(1, calls().getIntParam(android::fourCC("DCCP")));
    EXPECT_EQ(-1000, calls().getIntParam(android::fourCC("LCTM")));
    calls().setIntParam(android::fourCC("RLTF"), 7);
    EXPECT_EQ("Music", calls().getProfileName(2));
    EXPECT_EQ(1002003, calls().getDefaultXmlFormatVersion());
    EXPECT_EQ("phones_b", calls().getSelectedTuningDevice(3));
    EXPECT_EQ(-1, calls().getAvailableTuningDevicesLen(6));
    EXPECT_EQ(9, calls().getDialogEnhancerAmount());
    EXPECT_TRUE(calls().isSpeakerPortraitMode());
    EXPECT_EQ(0, calls().setAupParam(Bytes{0, 0, 0, 10, 0, 0, 0, 0, 2, 0, 0, 0}));
}

TEST_F(PqsFrontEndTest, AupParamAnswerIsZeroFilledToTheAskedLengthAndBounded) {
    const Bytes request = {0, 0, 0, 1, 108, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_CALL(*service, getAupParam(_, 12, _, 16))
            .WillOnce([&request](const void* in, uint32_t, void* out, uint32_t) {
                if (memcmp(in, request.data(), request.size()) != 0) return -5;
                const int32_t answer = 7;
                memcpy(out, &answer, sizeof(answer));
                return 0;
            });
    EXPECT_CALL(*service, getAupParam(_, 0, _, 0)).WillOnce(Return(-19));

    auto [status, out] = calls().getAupParam(request, 16);
    EXPECT_EQ(0, status);
    ASSERT_EQ(16u, out.size());
    int32_t first = 0;
    memcpy(&first, out.data(), sizeof(first));
    EXPECT_EQ(7, first);
    EXPECT_EQ(Bytes(12, 0), Bytes(out.begin() + 4, out.end()));

    auto [notReady, none] = calls().getAupParam({}, 0);
    EXPECT_EQ(-19, notReady);
    EXPECT_TRUE(none.empty());

    // An answer over 64 KiB is refused before anything is allocated or asked.
    LogCapture log;
    auto [refused, nothing] = calls().getAupParam(request, 64 * 1024 + 1);
    EXPECT_EQ(-22, refused);
    EXPECT_TRUE(nothing.empty());
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "PqsAdaptor",
                             "getAupParam: answer length 65537 refused"));
}

TEST_F(PqsFrontEndTest, StoredParamsAreSortedByDeviceThenId) {
    EXPECT_CALL(*service, getStoredParams(_, true, _))
            .WillOnce([](android::KeyedVector<uint32_t, AupParamCache*>* out, bool, int* count) {
                out->add(0, new AupParamCache(0x8, 5, {1}));
                out->add(1, new AupParamCache(0x2, 9, {2, 3}));
                out->add(2, new AupParamCache(0x2, 1, {}));
                *count = 3;
                return 0;
            });
    EXPECT_CALL(*service, getStoredParams(_, false, _)).WillOnce(Return(-22));

    auto [status, entries] = calls().getStoredParams(true);
    EXPECT_EQ(0, status);
    ASSERT_EQ(3u, entries.size());
    EXPECT_EQ(0x2u, entries[0].get<0>());
    EXPECT_EQ(1u, entries[0].get<1>());
    EXPECT_TRUE(entries[0].get<2>().empty());
    EXPECT_EQ(9u, entries[1].get<1>());
    EXPECT_EQ((std::vector<int32_t>{2, 3}), entries[1].get<2>());
    EXPECT_EQ(0x8u, entries[2].get<0>());
    EXPECT_EQ(5u, entries[2].get<1>());

    auto [pendingStatus, pending] = calls().getStoredParams(false);
    EXPECT_EQ(-22, pendingStatus);
    EXPECT_TRUE(pending.empty());
}

TEST_F(PqsFrontEndTest, DeviceListAndNameBuffersAreBounded) {
    EXPECT_CALL(*service, getAvailableTuningDevices(0, _, 10))
            .WillOnce([](int, void* buffer, int length) { memset(buffer, ' ', length); });
    EXPECT_CALL(*service, getAvailableTuningDevices(1, nullptr, -1));
    EXPECT_CALL(*service, setSelectedTuningDevice(3, _, 3))
            .WillOnce([](int, const void* name, int) { EXPECT_EQ(0, memcmp(name, "spk", 3)); });
    EXPECT_CALL(*service, setSelectedTuningDevice(4, _, 0));

    EXPECT_EQ(Bytes(10, ' '), calls().getAvailableTuningDevices(0, 10));
    EXPECT_TRUE(calls().getAvailableTuningDevices(1, -1).empty());
    // Too large to allocate for: refused without asking the service.
    EXPECT_TRUE(calls().getAvailableTuningDevices(2, 1 << 30).empty());
    calls().setSelectedTuningDevice(3, Bytes{'s', 'p', 'k'});
    calls().setSelectedTuningDevice(4, Bytes{});
}

TEST_F(PqsFrontEndTest, StoreWritesAndDumpReachTheService) {
    EXPECT_CALL(*service, setParam(0x40000000u, 0x6e6f6564, _, 3))
            .WillOnce([](uint32_t, android::AupParameterId, const int* values, uint32_t) {
                return values[0] == 1 && values[1] == -2 && values[2] == 3 ? 0 : -1;
            });
    EXPECT_CALL(*service, commitChange()).WillOnce(Return(0));
    EXPECT_CALL(*service, dump(_, std::vector<std::string>{"-a", "b"}))
            .WillOnce([](int fd, const std::vector<std::string>&) {
                EXPECT_EQ(6, write(fd, "hello\n", 6));
            });

    EXPECT_EQ(0, calls().setParam(0x40000000u, 0x6e6f6564, {1, -2, 3}));
    EXPECT_EQ(0, calls().commitChange());
    int fd = memfd_create("dump", MFD_CLOEXEC);
    ASSERT_GE(fd, 0);
    calls().dump(sdbus::UnixFd(fd), {"-a", "b"});
    char text[16] = {};
    EXPECT_EQ(6, pread(fd, text, sizeof(text), 0));
    EXPECT_STREQ("hello\n", text);
    close(fd);
}

TEST_F(PqsFrontEndTest, WrongArgumentTypesGetADBusErrorAndServingGoesOn) {
    std::unique_ptr<sdbus::IConnection> connection =
            sdbus::createSessionBusConnectionWithAddress(bus.address());
    auto proxy = sdbus::createProxy(*connection, kPqsServiceName, kPqsObjectPath);
    const char* iface = PqsClient::ServiceCalls::INTERFACE_NAME;
    try {
        proxy->callMethod("getIntParam").onInterface(iface).withArguments(std::string("DCCP"));
        ADD_FAILURE() << "a string for a code was accepted";
    } catch (const sdbus::Error& e) {
        EXPECT_EQ("org.freedesktop.DBus.Error.InvalidArgs", e.getName());
    }
    try {
        proxy->callMethod("setAupParam").onInterface(iface).withArguments(int32_t{5});
        ADD_FAILURE() << "an int for a blob was accepted";
    } catch (const sdbus::Error& e) {
        EXPECT_EQ("org.freedesktop.DBus.Error.InvalidArgs", e.getName());
    }
    EXPECT_CALL(*service, getIntParam(1u)).WillOnce(Return(5));
    EXPECT_EQ(5, calls().getIntParam(1));
}

TEST_F(PqsFrontEndTest, RegisteredClientIsCalledBackOneWayAtItsPath) {
    android::sp<android::IPqsCallbacks> callbacks = registerAndCapture(client, 3, 77);
    ASSERT_NE(nullptr, callbacks.get());

    const uint8_t blob[] = {0, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0};
    EXPECT_TRUE(callbacks->onAupParamUpdate(blob, sizeof(blob)));
    EXPECT_TRUE(callbacks->onAupParamUpdate(nullptr, 0));
    Bytes update;
    ASSERT_TRUE(client.waitForUpdate([](const Bytes&) { return true; }, 5s, &update));
    EXPECT_EQ(Bytes(blob, blob + sizeof(blob)), update);
    ASSERT_TRUE(client.waitForUpdate([](const Bytes&) { return true; }, 5s, &update));
    EXPECT_TRUE(update.empty());

    // The same client and path are the same object to the service.
    android::sp<android::IPqsCallbacks> again;
    EXPECT_CALL(*service, registerClient(_, 4, 77))
            .WillOnce([&again](const android::sp<android::IPqsCallbacks>& c, int, uint32_t) {
                again = c;
            });
    calls().registerClient(sdbus::ObjectPath(PqsClient::kCallbacksPath), 4, 77);
    EXPECT_EQ(callbacks.get(), again.get());

    // "/" stands for no callback object.
    EXPECT_CALL(*service, registerClient(android::sp<android::IPqsCallbacks>(), 0, 5));
    calls().registerClient(sdbus::ObjectPath("/"), 0, 5);

    EXPECT_CALL(*service, unregisterClient(callbacks, 3, 77));
    client.unregisterClient();
}

TEST_F(PqsFrontEndTest, ClientLeavingTheBusIsReportedOnceAndItsCallbacksFail) {
    auto other = std::make_unique<PqsClient>(bus.address());
    ASSERT_TRUE(other->connect(&error)) << error;
    android::sp<android::IPqsCallbacks> callbacks = registerAndCapture(*other, 0, 10);
    ASSERT_NE(nullptr, callbacks.get());
    android::sp<DeathRecorder> linked = new DeathRecorder();
    android::sp<DeathRecorder> unlinked = new DeathRecorder();
    EXPECT_TRUE(callbacks->linkToDeath(linked, 42));
    EXPECT_TRUE(callbacks->linkToDeath(unlinked, 43));
    EXPECT_TRUE(callbacks->unlinkToDeath(unlinked));
    EXPECT_FALSE(callbacks->unlinkToDeath(unlinked));

    // A client that stays must not be taken for dead.
    android::sp<android::IPqsCallbacks> staying = registerAndCapture(client, 0, 11);
    android::sp<DeathRecorder> stayingDeath = new DeathRecorder();
    staying->linkToDeath(stayingDeath, 44);

    EXPECT_CALL(*service, unregisterClient(_, 0, 10));
    EXPECT_CALL(*service, unregisterClient(staying, 0, 11));
    other.reset();  // closes its connection

    ASSERT_TRUE(linked->waitForDeath(5s));
    EXPECT_EQ(std::vector<uint64_t>{42}, linked->cookies());
    EXPECT_EQ(callbacks.get(), linked->who().promote().get());
    EXPECT_FALSE(unlinked->waitForDeath(100ms));
    EXPECT_FALSE(stayingDeath->waitForDeath(0ms));
    const uint8_t bytes[] = {1};
    EXPECT_FALSE(callbacks->onAupParamUpdate(bytes, 1));
    EXPECT_TRUE(staying->onAupParamUpdate(bytes, 1));
}

// The service calls clients back holding its lock, and registerClient waits for
// that lock on the bus thread. A callback must therefore never need the bus
// thread, or both would wait for each other.
TEST_F(PqsFrontEndTest, CallbacksUnderTheServiceLockDoNotWaitForABlockedRequest) {
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
        for (int i = 0; i < 20; ++i)
            sent = callbacks->onAupParamUpdate(bytes, sizeof(bytes)) && sent;
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
