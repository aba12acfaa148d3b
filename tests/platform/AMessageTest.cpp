#include <gtest/gtest.h>

#include "platform/ABuffer.h"
#include "platform/AMessage.h"

namespace vessa::test {
namespace {

using android::ABuffer;
using android::AMessage;
using android::sp;

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
}

}  // namespace
}  // namespace vessa::test
