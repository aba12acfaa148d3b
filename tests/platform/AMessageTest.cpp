#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "platform/ABuffer.h"
#include "platform/AMessage.h"

namespace vessa::test {
namespace {

using android::ABuffer;
using android::AMessage;
using android::sp;

TEST(AMessageTest, FindsOnlyNamesSetWithTheSameType) {
    sp<AMessage> msg = new AMessage;
    msg->setWhat(0x73657474);
    EXPECT_EQ(0x73657474u, msg->what());

    int32_t port = 7;
    sp<ABuffer> buffer = new ABuffer(4);
    EXPECT_FALSE(msg->findInt32("port", &port));
    EXPECT_FALSE(msg->findBuffer("buffer", &buffer));
    EXPECT_EQ(7, port);
    EXPECT_NE(nullptr, buffer);

    msg->setInt32("port", 2);
    msg->setBuffer("buffer", new ABuffer(8));
    EXPECT_FALSE(msg->findInt32("buffer", &port));
    EXPECT_FALSE(msg->findBuffer("port", &buffer));
    ASSERT_TRUE(msg->findInt32("port", &port));
    EXPECT_EQ(2, port);
    ASSERT_TRUE(msg->findBuffer("buffer", &buffer));
    EXPECT_EQ(8u, buffer->size());

    // A name set again takes the new value and type.
    msg->setInt32("buffer", 5);
    EXPECT_FALSE(msg->findBuffer("buffer", &buffer));
    ASSERT_TRUE(msg->findInt32("buffer", &port));
    EXPECT_EQ(5, port);
}

TEST(ABufferTest, KeepsItsRangeInsideTheCapacityAndCopiesOnlyWhenAsked) {
    sp<ABuffer> owned = new ABuffer(16);
    EXPECT_EQ(16u, owned->size());
    ASSERT_EQ(android::OK, owned->setRange(4, 12));
    EXPECT_EQ(owned->base() + 4, owned->data());
    EXPECT_EQ(android::BAD_VALUE, owned->setRange(4, 13));
    EXPECT_EQ(android::BAD_VALUE, owned->setRange(17, 0));
    EXPECT_EQ(android::BAD_VALUE, owned->setRange(1, SIZE_MAX));
    EXPECT_EQ(4u, owned->offset());
    EXPECT_EQ(12u, owned->size());
    EXPECT_EQ(16u, owned->capacity());
    EXPECT_EQ(android::OK, owned->setRange(16, 0));

    uint8_t external[3] = {1, 2, 3};
    sp<ABuffer> wrapped = new ABuffer(external, sizeof(external));
    sp<ABuffer> copy = ABuffer::CreateAsCopy(external, sizeof(external));
    external[0] = 9;
    EXPECT_EQ(external, wrapped->data());
    EXPECT_EQ(1, copy->data()[0]);
    EXPECT_EQ(0, std::memcmp(external + 1, copy->data() + 1, 2));
}

}  // namespace
}  // namespace vessa::test
