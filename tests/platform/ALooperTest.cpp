#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <thread>

#include "RecordingHandler.h"
#include "platform/ABuffer.h"
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

    sp<AMessage> tick(int32_t sender, int32_t seq, const sp<RecordingHandler>& to) {
        sp<AMessage> msg = new AMessage(kWhatTick, to);
        msg->setInt32("sender", sender);
        msg->setInt32("seq", seq);
        return msg;
    }
    sp<AMessage> tick(int32_t seq) { return tick(0, seq, mHandler); }

    sp<ALooper> mLooper;
    sp<RecordingHandler> mHandler;
};

TEST_F(ALooperTest, KeepsEachSendersOrderAndDeliversOnTheNamedLooperThread) {
    constexpr int kPerSender = 500;
    auto send = [&](int32_t sender) {
        for (int32_t seq = 0; seq < kPerSender; ++seq) {
            ASSERT_EQ(OK, tick(sender, seq, mHandler)->post());
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
    // The kernel keeps the first 15 characters of a thread name.
    EXPECT_EQ(std::string(kLooperName).substr(0, 15), name);
}

TEST_F(ALooperTest, DeliversDelayedMessagesByDueTimeAndEqualTimesInPostingOrder) {
    mHandler->holdNextDelivery();
    ASSERT_EQ(OK, tick(0)->post());
    ASSERT_TRUE(mHandler->waitUntilHeld());
    // While the thread is held, everything below is due before it can look again.
    ASSERT_EQ(OK, tick(4)->post(60000));
    ASSERT_EQ(OK, tick(3)->post(30000));
    ASSERT_EQ(OK, tick(1)->post());
    ASSERT_EQ(OK, tick(2)->post());
    sp<AMessage> farFuture = tick(99);
    ASSERT_EQ(OK, farFuture->post(INT64_MAX));
    mHandler->release();
    ASSERT_TRUE(mHandler->waitForCount(5));

    auto deliveries = mHandler->deliveries();
    ASSERT_EQ(5u, deliveries.size());
    for (int32_t i = 0; i < 5; ++i) EXPECT_EQ(i, deliveries[i].seq);
}

TEST_F(ALooperTest, StopWaitsForTheRunningDeliveryAndDiscardsTheQueue) {
    mHandler->holdNextDelivery();
    ASSERT_EQ(OK, tick(0)->post());
    ASSERT_TRUE(mHandler->waitUntilHeld());
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
    ASSERT_TRUE(mHandler->waitForCount(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    auto deliveries = mHandler->deliveries();
    ASSERT_EQ(2u, deliveries.size());
    EXPECT_EQ(101, deliveries[1].seq);
    EXPECT_EQ(android::INVALID_OPERATION, mLooper->start());
}

TEST_F(ALooperTest, DropsMessagesForAnUnregisteredHandler) {
    LogCapture log;
    sp<RecordingHandler> other = new RecordingHandler;
    ALooper::handler_id otherId = mLooper->registerHandler(other);
    ASSERT_GT(otherId, 0);
    EXPECT_NE(mHandler->id(), otherId);
    EXPECT_EQ(android::INVALID_OPERATION, mLooper->registerHandler(other));
    EXPECT_EQ(mLooper, other->looper());

    mHandler->holdNextDelivery();
    ASSERT_EQ(OK, tick(0)->post());
    ASSERT_TRUE(mHandler->waitUntilHeld());
    sp<AMessage> early = tick(0, 1, other);
    for (int32_t seq = 1; seq <= 5; ++seq) ASSERT_EQ(OK, tick(0, seq, other)->post());
    mLooper->unregisterHandler(otherId);
    EXPECT_EQ(0, other->id());
    EXPECT_EQ(nullptr, other->looper());
    // Addressed before the handler left: refused now.
    EXPECT_EQ(-ENOENT, early->post());
    EXPECT_EQ(-ENOENT, tick(0, 6, other)->post());

    ASSERT_EQ(OK, tick(1)->post());
    mHandler->release();
    ASSERT_TRUE(mHandler->waitForCount(2));
    EXPECT_TRUE(other->deliveries().empty());
    EXPECT_EQ(5u, log.count("ALooper",
                            "dropped message 0x7469636b for handler " + std::to_string(otherId)));

    // Free again, it can join another looper.
    sp<ALooper> second = new ALooper;
    EXPECT_GT(second->registerHandler(other), 0);
}

TEST_F(ALooperTest, PostFailsWithoutATargetOrOnceTheLooperIsGone) {
    EXPECT_EQ(-ENOENT, sp<AMessage>(new AMessage)->post());
    EXPECT_EQ(-ENOENT, sp<AMessage>(new AMessage(kWhatTick, nullptr))->post());

    sp<ALooper> shortLived = new ALooper;
    sp<RecordingHandler> handler = new RecordingHandler;
    ASSERT_GT(shortLived->registerHandler(handler), 0);
    ASSERT_EQ(OK, shortLived->start());
    sp<AMessage> msg = tick(0, 0, handler);
    ASSERT_EQ(OK, tick(0, 1, handler)->post(INT64_MAX));
    wp<ALooper> weak = shortLived;
    shortLived.clear();  // releasing a running looper stops its thread
    EXPECT_EQ(nullptr, weak.promote());
    EXPECT_EQ(-ENOENT, msg->post());
    EXPECT_EQ(0, handler->id());
}

// Owns its looper, as an event handler of a service does; its delivery waits for `go`.
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

TEST(ALooperLifetimeTest, ReleasingTheLastReferenceDuringADeliveryEndsTheThreadCleanly) {
    std::promise<void> go;
    std::promise<void> destroyed;
    sp<OwningHandler> handler = new OwningHandler(go.get_future().share(), &destroyed);
    ASSERT_GT(handler->mLooper->registerHandler(handler), 0);
    ASSERT_EQ(OK, handler->mLooper->start());
    ASSERT_EQ(OK, sp<AMessage>(new AMessage(kWhatTick, handler))->post());
    // The delivery now holds the only reference: handler and looper die on the
    // looper thread once it returns.
    handler.clear();
    go.set_value();
    EXPECT_EQ(std::future_status::ready, destroyed.get_future().wait_for(std::chrono::seconds(5)));
}

TEST_F(ALooperTest, APayloadCopyIsNotChangedByThePosterAfterPosting) {
    mHandler->holdNextDelivery();
    ASSERT_EQ(OK, tick(0)->post());
    ASSERT_TRUE(mHandler->waitUntilHeld());

    uint8_t bytes[] = {'s', 'p', 'k', 'r'};
    sp<AMessage> msg = tick(1);
    msg->setBuffer("buffer", ABuffer::CreateAsCopy(bytes, sizeof(bytes)));
    ASSERT_EQ(OK, msg->post());
    std::memset(bytes, 0, sizeof(bytes));
    mHandler->release();
    ASSERT_TRUE(mHandler->waitForCount(2));
    EXPECT_EQ((std::vector<uint8_t>{'s', 'p', 'k', 'r'}), mHandler->deliveries()[1].bytes);
}

}  // namespace
}  // namespace vessa::test
