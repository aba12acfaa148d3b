#include <gtest/gtest.h>

#include "protocol/PqsProtocol.h"

namespace vessa {
namespace {

using Kind = client::Update::Kind;
using Bytes = PqsProtocol::Bytes;

TEST(APortBlob, ReadsBackWithItsAnswerAndEveryValue) {
    Bytes blob = PqsProtocol::setPortParameter(3, 4, 110, {-576, 0, 576});
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 9);
    PqsProtocol::Blob read = PqsProtocol::readBlob(blob.data(), blob.size());
    EXPECT_EQ(PqsProtocol::kSetPortParameter, read.command);
    EXPECT_EQ(9, read.answer);
    EXPECT_EQ(3, read.profile);
    EXPECT_EQ(4, read.port);
    EXPECT_EQ(110, read.id);
    EXPECT_EQ(std::vector<int32_t>({-576, 0, 576}), read.values);
    // A torn last word is no value.
    EXPECT_EQ(2u, PqsProtocol::readBlob(blob.data(), blob.size() - 1).values.size());
    EXPECT_TRUE(
            PqsProtocol::isEchoOf(blob, PqsProtocol::setPortParameter(3, 4, 110, {-576, 0, 576})));
    EXPECT_FALSE(PqsProtocol::isEchoOf(blob, PqsProtocol::setPortParameter(3, 4, 110, {-576, 0})));
}

TEST(AShortBlob, ReadsAsIfPaddedWithZeros) {
    const uint8_t bytes[] = {0, 0, 0, 0, 1};
    PqsProtocol::Blob read = PqsProtocol::readBlob(bytes, sizeof(bytes));
    EXPECT_EQ(PqsProtocol::kOnOff, read.command);
    EXPECT_EQ(std::vector<int32_t>({0}), read.values);
    const uint8_t low[] = {1, 0, 0, 0};  // a set low bit makes word 0 no command
    EXPECT_EQ(-1, PqsProtocol::readBlob(low, sizeof(low)).command);
}

TEST(APortQuery, PacksProfileAndPortIntoOneByte) {
    Bytes query = PqsProtocol::portQuery(15, 6, 107);
    EXPECT_EQ(0xf6, query[8]);
    PqsProtocol::Query read = PqsProtocol::readQuery(query.data(), query.size());
    EXPECT_EQ(PqsProtocol::kQueryPortParameter, read.command);
    EXPECT_EQ(15, read.profile);
    EXPECT_EQ(6, read.port);
    EXPECT_EQ(107, read.id);
    Bytes modified = PqsProtocol::query(PqsProtocol::kQueryProfileModified, 4);
    EXPECT_EQ(4, PqsProtocol::readQuery(modified.data(), modified.size()).profile);
}

TEST(AnUpdate, DecodesToWhatTheServiceDid) {
    EXPECT_EQ(Kind::TUNING_RELOADED, PqsProtocol::readUpdate({}).kind);
    EXPECT_EQ(Kind::CLIENTS_CHANGED,
              PqsProtocol::readUpdate(PqsProtocol::registrationNotice()).kind);
    client::Update on = PqsProtocol::readUpdate(PqsProtocol::onOff(true));
    EXPECT_EQ(Kind::EFFECT_SWITCHED, on.kind);
    EXPECT_TRUE(on.on);
    client::Update set = PqsProtocol::readUpdate(PqsProtocol::setParameter(2, 108, {7}));
    EXPECT_EQ(Kind::SETTING_CHANGED, set.kind);
    EXPECT_EQ(std::make_tuple(2, -1, 108, std::vector<int32_t>({7})),
              std::make_tuple(set.profile, set.port, set.id, set.values));
    EXPECT_EQ(Kind::PROFILE_RESET, PqsProtocol::readUpdate(PqsProtocol::resetProfile(1)).kind);
    client::Update tuning =
            PqsProtocol::readUpdate(Bytes({'h', 'd', 'm', 'i', '_', 'a', 'v', 'r'}));
    EXPECT_EQ(Kind::TUNING_SELECTED, tuning.kind);
    EXPECT_EQ("hdmi_avr", tuning.tuning);
    EXPECT_EQ(Kind::OTHER_COMMAND, PqsProtocol::readUpdate(Bytes({0, 0, 0, 7, 0, 0, 0, 0})).kind);
    EXPECT_EQ(Kind::UNKNOWN, PqsProtocol::readUpdate(Bytes({1, 2, 3})).kind);
}

}  // namespace
}  // namespace vessa
