#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
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
using android::AMessage;
using android::OK;
using android::sp;
using namespace std::chrono_literals;

// Records what it receives. The delivery of a message carrying "hold" waits
// until `gate` is free.
class Recorder : public android::AHandler {
  public:
    struct Delivery {
        int32_t seq;
        pthread_t thread;
    };

    std::vector<Delivery> got() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mGot;
    }
    bool waitFor(size_t count) const {
        for (int i = 0; i < 500 && got().size() < count; ++i) std::this_thread::sleep_for(10ms);
        return got().size() >= count;
    }

    std::mutex gate;

  protected:
    void onMessageReceived(const sp<AMessage>& msg) override {
        Delivery delivery{-1, pthread_self()};
        msg->findInt32("seq", &delivery.seq);
        {
            std::lock_guard<std::mutex> lock(mLock);
            mGot.push_back(delivery);
        }
        if (msg->findInt32("hold", &delivery.seq)) {
            std::lock_guard<std::mutex> wait(gate);  // until the test lets go
        }
    }

  private:
    mutable std::mutex mLock;
    std::vector<Delivery> mGot;
};

sp<AMessage> tick(const sp<Recorder>& to, int32_t seq) {
    sp<AMessage> msg = new AMessage(0x7469636b, to);
    msg->setInt32("seq", seq);
    return msg;
}

class ALooperWithAHandler : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_GT(mLooper->registerHandler(mHandler), 0);
        ASSERT_EQ(OK, mLooper->start());
    }
    void TearDown() override {
        if (mHeld) mHeld.unlock();
        mLooper->stop();
    }

    // Keeps the looper thread inside the delivery of message 0 until mHeld.unlock().
    void holdLooperThread() {
        mHeld.lock();
        sp<AMessage> msg = tick(mHandler, 0);
        msg->setInt32("hold", 1);
        ASSERT_EQ(OK, msg->post());
        ASSERT_TRUE(mHandler->waitFor(1));
    }

    sp<android::ALooper> mLooper = new android::ALooper;
    sp<Recorder> mHandler = new Recorder;
    std::unique_lock<std::mutex> mHeld{mHandler->gate, std::defer_lock};
};

TEST_F(ALooperWithAHandler, DeliversEachConcurrentSendersMessagesInPostOrderOnItsOwnThread) {
    constexpr int kPerSender = 500;  // sender s posts s * 1000 + 0, 1, 2, ...
    auto send = [&](int32_t sender) {
        for (int32_t i = 0; i < kPerSender; ++i) {
            ASSERT_EQ(OK, tick(mHandler, sender * 1000 + i)->post());
        }
    };
    std::thread other(send, 2);
    send(1);
    other.join();
    ASSERT_TRUE(mHandler->waitFor(2 * kPerSender));

    int32_t next[3] = {0, 1000, 2000};
    const pthread_t looperThread = mHandler->got().front().thread;
    for (const Recorder::Delivery& delivery : mHandler->got()) {
        EXPECT_EQ(next[delivery.seq / 1000]++, delivery.seq);
        EXPECT_TRUE(pthread_equal(looperThread, delivery.thread));
    }
    EXPECT_FALSE(pthread_equal(looperThread, pthread_self()));
}

// A post made while stopped waits for the next start; the discarded ones never come back.
TEST_F(ALooperWithAHandler, StopWaitsForTheRunningDeliveryAndDiscardsTheQueueButNotLaterPosts) {
    holdLooperThread();
    for (int32_t seq = 1; seq <= 100; ++seq) {
        sp<AMessage> msg = tick(mHandler, seq);
        msg->setBuffer("buffer", new ABuffer(64));
        ASSERT_EQ(OK, msg->post());
    }
    std::atomic<bool> stopped{false};
    std::thread stopper([&] {
        mLooper->stop();
        stopped = true;
    });
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(stopped) << "stop returned while a delivery was running";
    mHeld.unlock();
    stopper.join();
    ASSERT_EQ(OK, tick(mHandler, 101)->post());
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(1u, mHandler->got().size());
    ASSERT_EQ(OK, mLooper->start());
    ASSERT_TRUE(mHandler->waitFor(2));
    std::this_thread::sleep_for(20ms);
    ASSERT_EQ(2u, mHandler->got().size());
    EXPECT_EQ(101, mHandler->got()[1].seq);
}

TEST_F(ALooperWithAHandler, DropsMessagesForAHandlerUnregisteredBeforeTheirDelivery) {
    LogCapture log;
    sp<Recorder> other = new Recorder;
    const int32_t otherId = mLooper->registerHandler(other);
    ASSERT_GT(otherId, 0);
    holdLooperThread();
    sp<AMessage> addressedEarly = tick(other, 0);
    for (int32_t seq = 1; seq <= 5; ++seq) ASSERT_EQ(OK, tick(other, seq)->post());
    mLooper->unregisterHandler(otherId);
    EXPECT_EQ(-ENOENT, addressedEarly->post());
    ASSERT_EQ(OK, tick(mHandler, 1)->post());
    mHeld.unlock();
    ASSERT_TRUE(mHandler->waitFor(2));
    EXPECT_TRUE(other->got().empty());
    EXPECT_EQ(5u, log.count("ALooper",
                            "dropped message 0x7469636b for handler " + std::to_string(otherId)));
}

// Queued while the thread is held, so only the due times decide the order.
TEST_F(ALooperWithAHandler, DeliversByDueTimeAndInPostOrderAmongEqualDueTimes) {
    holdLooperThread();
    ASSERT_EQ(OK, tick(mHandler, 1)->post(30000));
    ASSERT_EQ(OK, tick(mHandler, 2)->post(10000));
    for (int32_t seq = 3; seq <= 5; ++seq) ASSERT_EQ(OK, tick(mHandler, seq)->post());
    mHeld.unlock();
    ASSERT_TRUE(mHandler->waitFor(6));
    std::vector<int32_t> order;
    for (const Recorder::Delivery& delivery : mHandler->got()) order.push_back(delivery.seq);
    EXPECT_EQ(std::vector<int32_t>({0, 3, 4, 5, 2, 1}), order);
}

TEST(AMessage, FindsAValueOnlyUnderItsNameWithTheTypeLastSet) {
    sp<AMessage> msg = new AMessage;
    msg->setBuffer("port", new ABuffer(1));
    msg->setInt32("port", 3);  // set again: the new value and type replace the old
    int32_t port = 7;
    sp<ABuffer> buffer;
    EXPECT_FALSE(msg->findInt32("missing", &port) || msg->findBuffer("missing", &buffer));
    EXPECT_FALSE(msg->findBuffer("port", &buffer));
    EXPECT_EQ(7, port);
    EXPECT_EQ(nullptr, buffer);
    ASSERT_TRUE(msg->findInt32("port", &port));
    EXPECT_EQ(3, port);
    msg->setWhat(0x7469636b);
    msg->clear();
    EXPECT_FALSE(msg->findInt32("port", &port));
    EXPECT_EQ(0x7469636bu, msg->what());
}

}  // namespace
}  // namespace vessa::test
