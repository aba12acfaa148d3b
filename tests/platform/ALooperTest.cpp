#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/ABuffer.h"
#include "platform/AHandler.h"
#include "platform/ALooper.h"
#include "platform/AMessage.h"
#include "platform/LogCapture.h"

namespace vessa::test {
namespace {

using android::ABuffer;
using android::ALooper;
using android::AMessage;
using android::OK;
using android::sp;
using android::wp;

constexpr uint32_t kWhatTick = 0x7469636b;  // "tick"
constexpr const char* kLooperName = "VessaManagerService EventHandler";

// Records what it receives; holdNext() keeps the looper thread inside the next
// delivery until release().
class RecordingHandler : public android::AHandler {
  public:
    struct Delivery {
        int32_t sender = -1;
        int32_t seq = -1;
        pthread_t thread;
        std::vector<uint8_t> bytes;
    };

    std::vector<Delivery> deliveries() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mDeliveries;
    }
    bool waitForCount(size_t count) const {
        return waitFor([&] { return mDeliveries.size() >= count; });
    }
    void holdNext() {
        std::lock_guard<std::mutex> lock(mLock);
        mHoldNext = true;
        mReleased = false;
    }
    bool waitUntilHeld() const {
        return waitFor([&] { return mHeld; });
    }
    void release() {
        std::lock_guard<std::mutex> lock(mLock);
        mReleased = true;
        mChanged.notify_all();
    }

  protected:
    void onMessageReceived(const sp<AMessage>& msg) override {
        Delivery delivery;
        delivery.thread = pthread_self();
        msg->findInt32("sender", &delivery.sender);
        msg->findInt32("seq", &delivery.seq);
        sp<ABuffer> buffer;
        if (msg->findBuffer("buffer", &buffer)) {
            delivery.bytes.assign(buffer->data(), buffer->data() + buffer->size());
        }
        std::unique_lock<std::mutex> lock(mLock);
        mDeliveries.push_back(delivery);
        mHeld = mHoldNext;
        mHoldNext = false;
        mChanged.notify_all();
        mChanged.wait(lock, [&] { return !mHeld || mReleased; });
        mHeld = false;
    }

  private:
    template <typename Predicate>
    bool waitFor(Predicate done) const {
        std::unique_lock<std::mutex> lock(mLock);
        return mChanged.wait_for(lock, std::chrono::seconds(5), done);
    }

    mutable std::mutex mLock;
    mutable std::condition_variable mChanged;
    std::vector<Delivery> mDeliveries;
    bool mHoldNext = false;
    bool mHeld = false;
    bool mReleased = false;
};

sp<AMessage> makeTick(int32_t sender, int32_t seq, const sp<RecordingHandler>& to) {
    sp<AMessage> msg = new AMessage(kWhatTick, to);
    msg->setInt32("sender", sender);
    msg->setInt32("seq", seq);
    return msg;
}

class ALooperTest : public ::testing::Test {
  protected:
    void SetUp() override {
        mLooper = new ALooper;
        mLooper->setName(kLooperName);
        mHandler = new RecordingHandler;
        ASSERT_GT(mLooper->registerHandler(mHandler), 0);
        ASSERT_EQ(OK, mLooper->start());
    }

    void TearDown() override { mLooper->stop(); }

    sp<AMessage> tick(int32_t seq) { return makeTick(0, seq, mHandler); }

    // Keeps the looper thread inside the delivery of message 0 until release().
    void holdLooperThread() {
        mHandler->holdNext();
        ASSERT_EQ(OK, tick(0)->post());
        ASSERT_TRUE(mHandler->waitUntilHeld());
    }

    sp<ALooper> mLooper;
    sp<RecordingHandler> mHandler;
};

TEST_F(ALooperTest, KeepsEachSendersOrderAndDeliversOnTheNamedLooperThread) {
    constexpr int kPerSender = 500;
    auto send = [&](int32_t sender) {
        for (int32_t seq = 0; seq < kPerSender; ++seq) {
            ASSERT_EQ(OK, makeTick(sender, seq, mHandler)->post());
        }
    };
    std::thread first(send, 1);
    std::thread second(send, 2);
    first.join();
    second.join();
    ASSERT_TRUE(mHandler->waitForCount(2 * kPerSender));

    auto deliveries = mHandler->deliveries();
    ASSERT_EQ(2u * kPerSender, deliveries.size());
    int32_t next[3] = {0, 0, 0};
    pthread_t looperThread = deliveries.front().thread;
    for (const auto& delivery : deliveries) {
        ASSERT_TRUE(delivery.sender == 1 || delivery.sender == 2);
        EXPECT_EQ(next[delivery.sender]++, delivery.seq) << "sender " << delivery.sender;
        EXPECT_TRUE(pthread_equal(looperThread, delivery.thread));
    }
    EXPECT_FALSE(pthread_equal(looperThread, pthread_self()));
    char name[16] = {};
    ASSERT_EQ(0, pthread_getname_np(looperThread, name, sizeof(name)));
    EXPECT_EQ(std::string(kLooperName).substr(0, 15), name);
}

TEST_F(ALooperTest, DeliversByDueTimeAndKeepsCopiedPayloadsIntact) {
    holdLooperThread();
    // While the thread is held, everything below is due before it looks again.
    ASSERT_EQ(OK, tick(4)->post(60000));
    ASSERT_EQ(OK, tick(3)->post(30000));
    uint8_t bytes[] = {'s', 'p', 'k', 'r'};
    sp<AMessage> withPayload = tick(1);
    withPayload->setBuffer("buffer", ABuffer::CreateAsCopy(bytes, sizeof(bytes)));
    ASSERT_EQ(OK, withPayload->post());
    std::memset(bytes, 0, sizeof(bytes));
    ASSERT_EQ(OK, tick(2)->post());
    ASSERT_EQ(OK, tick(99)->post(INT64_MAX));
    mHandler->release();
    ASSERT_TRUE(mHandler->waitForCount(5));

    auto deliveries = mHandler->deliveries();
    ASSERT_EQ(5u, deliveries.size());
    for (int32_t i = 0; i < 5; ++i) EXPECT_EQ(i, deliveries[i].seq);
    EXPECT_EQ((std::vector<uint8_t>{'s', 'p', 'k', 'r'}), deliveries[1].bytes);
}

TEST_F(ALooperTest, StopWaitsForTheRunningDeliveryAndDiscardsTheQueue) {
    holdLooperThread();
    for (int32_t seq = 1; seq <= 100; ++seq) {
        sp<AMessage> msg = tick(seq);
        msg->setBuffer("buffer", new ABuffer(64));
        ASSERT_EQ(OK, msg->post());
    }
    std::atomic<bool> stopped{false};
    std::thread stopper([&] {
        mLooper->stop();
        stopped = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(stopped) << "stop returned while a delivery was running";
    mHandler->release();
    stopper.join();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(1u, mHandler->deliveries().size());

    // Posts while stopped wait for the next start; the discarded ones never come back.
    ASSERT_EQ(OK, tick(101)->post());
    ASSERT_EQ(OK, mLooper->start());
    EXPECT_EQ(android::INVALID_OPERATION, mLooper->start());
    ASSERT_TRUE(mHandler->waitForCount(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    auto deliveries = mHandler->deliveries();
    ASSERT_EQ(2u, deliveries.size());
    EXPECT_EQ(101, deliveries[1].seq);
}

TEST_F(ALooperTest, DropsMessagesForAnUnregisteredHandlerAndRefusesUntargetedOnes) {
    LogCapture log;
    EXPECT_EQ(-ENOENT, sp<AMessage>(new AMessage)->post());
    sp<RecordingHandler> other = new RecordingHandler;
    ALooper::handler_id otherId = mLooper->registerHandler(other);
    ASSERT_GT(otherId, 0);
    EXPECT_NE(mHandler->id(), otherId);
    EXPECT_EQ(android::INVALID_OPERATION, mLooper->registerHandler(other));
    EXPECT_EQ(mLooper, other->looper());

    holdLooperThread();
    sp<AMessage> addressedEarly = makeTick(0, 1, other);
    for (int32_t seq = 1; seq <= 5; ++seq) ASSERT_EQ(OK, makeTick(0, seq, other)->post());
    mLooper->unregisterHandler(otherId);
    EXPECT_EQ(0, other->id());
    EXPECT_EQ(nullptr, other->looper());
    EXPECT_EQ(-ENOENT, addressedEarly->post());
    EXPECT_EQ(-ENOENT, makeTick(0, 6, other)->post());

    ASSERT_EQ(OK, tick(1)->post());
    mHandler->release();
    ASSERT_TRUE(mHandler->waitForCount(2));
    EXPECT_TRUE(other->deliveries().empty());
    EXPECT_EQ(5u, log.count("ALooper",
                            "dropped message 0x7469636b for handler " + std::to_string(otherId)));
    sp<ALooper> second = new ALooper;
    EXPECT_GT(second->registerHandler(other), 0);
}

// Owns its looper, as a service's event handler does; its delivery waits for `go`.
class OwningHandler : public android::AHandler {
  public:
    OwningHandler(std::shared_future<void> go, std::promise<void>* destroyed)
        : mLooper(new ALooper), mGo(std::move(go)), mDestroyed(destroyed) {}
    ~OwningHandler() override {
        mLooper.clear();
        mDestroyed->set_value();
    }
    sp<ALooper> mLooper;

  protected:
    void onMessageReceived(const sp<AMessage>&) override { mGo.wait(); }

  private:
    std::shared_future<void> mGo;
    std::promise<void>* mDestroyed;
};

TEST(ALooperLifetimeTest, ReleasingALooperStopsItsThreadEvenFromInsideADelivery) {
    sp<ALooper> looper = new ALooper;
    sp<RecordingHandler> recorder = new RecordingHandler;
    ASSERT_GT(looper->registerHandler(recorder), 0);
    ASSERT_EQ(OK, looper->start());
    sp<AMessage> late = makeTick(0, 0, recorder);
    ASSERT_EQ(OK, makeTick(0, 1, recorder)->post(INT64_MAX));
    wp<ALooper> weak = looper;
    looper.clear();
    EXPECT_EQ(nullptr, weak.promote());
    EXPECT_EQ(-ENOENT, late->post());
    EXPECT_EQ(0, recorder->id());

    // Here the delivery holds the last reference: handler and looper die on the
    // looper thread once it returns.
    std::promise<void> go;
    std::promise<void> destroyed;
    sp<OwningHandler> owner = new OwningHandler(go.get_future().share(), &destroyed);
    ASSERT_GT(owner->mLooper->registerHandler(owner), 0);
    ASSERT_EQ(OK, owner->mLooper->start());
    ASSERT_EQ(OK, sp<AMessage>(new AMessage(kWhatTick, owner))->post());
    owner.clear();
    go.set_value();
    EXPECT_EQ(std::future_status::ready, destroyed.get_future().wait_for(std::chrono::seconds(5)));
}

}  // namespace
}  // namespace vessa::test
