#include <android/log.h>
#include <gtest/gtest.h>

#include "EffectTestUtil.h"
#include "effect/AupEffect.h"
#include "effect/SetParamCommand.h"
#include "platform/AupParamStore.h"

namespace vessa {
namespace {

using test::batchWords;

class SetParamCommandTest : public ::testing::Test {
  protected:
    void SetUp() override { AupParamStore::getInstance().reset(); }
    AupEffect mEffect{0, android::String16("test")};
};

TEST_F(SetParamCommandTest, EveryAddFormWritesOneEntry) {
    SetParamCommand cmd(0x40000000);
    EXPECT_EQ((std::vector<int>{0x40000000, 0}), cmd.buffer());
    EXPECT_EQ(-1, cmd.getDeviceId());

    const std::vector<int> a = {1, 2, 3};
    const std::vector<int> b = {-4};
    const std::vector<int> empty;
    cmd.add(AupParameter::DVLE, 7);  // before any setDeviceId: device -1
    cmd.setDeviceId(0x2);
    cmd.add(AupParameter::DVLA, &a);
    cmd.add(AupParameter::GEON, {&a, &empty, &b});
    cmd.setDeviceId(0x8);
    cmd.add(AupParameter::GEBS, 3, {&a, &b});
    cmd.add(AupParameter::IEBS, 0, {});
    cmd.add(AupParameter::VOL, &empty);
    cmd.add(AupParameter::VOL, {});
    cmd.addParts(AupParameter::DOM, {a, 9, empty, b});

    EXPECT_EQ(8, cmd.getEntryCount());
    EXPECT_EQ(batchWords(0x40000000, {{-1, AupParameter::DVLE, {7}},
                                      {0x2, AupParameter::DVLA, {1, 2, 3}},
                                      {0x2, AupParameter::GEON, {1, 2, 3, -4}},
                                      {0x8, AupParameter::GEBS, {3, 1, 2, 3, -4}},
                                      {0x8, AupParameter::IEBS, {0}},
                                      {0x8, AupParameter::VOL, {}},
                                      {0x8, AupParameter::VOL, {}},
                                      {0x8, AupParameter::DOM, {1, 2, 3, 9, -4}}}),
              cmd.buffer());
}

TEST_F(SetParamCommandTest, EmptyBatchIsNotSent) {
    SetParamCommand cmd(0x2);
    cmd.setDeviceId(0x2);
    EXPECT_EQ(0, cmd.execute(mEffect));
    EXPECT_EQ(0u, AupParamStore::getInstance().getCommitCount());
    EXPECT_EQ(0, cmd.buffer()[1]);
}

TEST_F(SetParamCommandTest, ExecuteWritesTheCountAndStoresEveryEntry) {
    SetParamCommand cmd(0x40000000);
    cmd.setDeviceId(0x2);
    cmd.add(AupParameter::DVLE, 1);
    cmd.setDeviceId(0x8);
    const std::vector<int> values = {5, 6};
    cmd.add(AupParameter::DVLA, &values);

    EXPECT_EQ(-22, cmd.execute(mEffect));
    EXPECT_EQ(2, cmd.buffer()[1]);
    EXPECT_EQ(0x40000000, cmd.buffer()[0]);

    AupParamStore& store = AupParamStore::getInstance();
    EXPECT_EQ(1u, store.getCommitCount());
    const std::vector<AupParamCache> expected = {
            AupParamCache(0x2, 0x656C7664, {1}),
            AupParamCache(0x8, static_cast<uint32_t>(aupParameterId(AupParameter::DVLA)), {5, 6}),
    };
    EXPECT_EQ(expected, store.storedParams(true));
    EXPECT_TRUE(store.storedParams(false).empty());
}

}  // namespace
}  // namespace vessa
