#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <utility>

#include "SampleRoot.h"
#include "protocol/PqsProtocol.h"
#include "protocol/SettingsTable.h"
#include "tuning/SetterCollection.h"
#include "tuning/SingleParamValueSetter.h"

namespace vessa {
namespace {

using Kind = client::Update::Kind;
using Bytes = PqsProtocol::Bytes;
using Words = std::vector<int32_t>;

TEST(APortBlob, ReadsBackWithItsAnswerAndEveryValue) {
    Bytes blob = PqsProtocol::setPortParameter(3, 4, 110, {-576, 0, 576});
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 9);
    PqsProtocol::Blob read = PqsProtocol::readBlob(blob.data(), blob.size());
    EXPECT_EQ(
            std::make_tuple(int(PqsProtocol::kSetPortParameter), 9, 3, 4, 110, Words{-576, 0, 576}),
            std::make_tuple(read.command, read.answer, read.profile, read.port, read.id,
                            read.values));
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
    EXPECT_EQ(Words({0}), read.values);
    const uint8_t low[] = {1, 0, 0, 0};  // a set low bit makes word 0 no command
    EXPECT_EQ(-1, PqsProtocol::readBlob(low, sizeof(low)).command);
}

TEST(APortQuery, PacksProfileAndPortIntoOneByte) {
    Bytes query = PqsProtocol::portQuery(15, 6, 107);
    EXPECT_EQ(0xf6, query[8]);
    PqsProtocol::Query read = PqsProtocol::readQuery(query.data(), query.size());
    EXPECT_EQ(std::make_tuple(uint32_t(PqsProtocol::kQueryPortParameter), 15, 6, 107),
              std::make_tuple(read.command, read.profile, read.port, read.id));
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
    EXPECT_EQ(std::make_tuple(2, -1, 108, Words({7})),
              std::make_tuple(set.profile, set.port, set.id, set.values));
    EXPECT_EQ(Kind::PROFILE_RESET, PqsProtocol::readUpdate(PqsProtocol::resetProfile(1)).kind);
    client::Update tuning =
            PqsProtocol::readUpdate(Bytes({'h', 'd', 'm', 'i', '_', 'a', 'v', 'r'}));
    EXPECT_EQ(Kind::TUNING_SELECTED, tuning.kind);
    EXPECT_EQ("hdmi_avr", tuning.tuning);
    EXPECT_EQ(Kind::OTHER_COMMAND, PqsProtocol::readUpdate(Bytes({0, 0, 0, 7, 0, 0, 0, 0})).kind);
    EXPECT_EQ(Kind::UNKNOWN, PqsProtocol::readUpdate(Bytes({1, 2, 3})).kind);
}

TEST(TheSettingsTable, AgreesWithTheRangesOfTheSampleGenerator) {
    // The ranges the generator checks the values it writes against, by tag: its
    // EXPOSED_RANGES entries and its GEQ_GAIN_RANGE.
    const std::string script = test::readFile(test::sourcePath("scripts/gen-tuning-samples"));
    const std::regex entry(R"re((?:"([a-z-]+)": |GEQ_GAIN_RANGE = )\((-?\d+), (-?\d+)\))re");
    std::map<std::string, std::pair<int, int>> ranges;
    for (std::sregex_iterator it(script.begin(), script.end(), entry), end; it != end; ++it) {
        const std::string tag = (*it)[1].matched ? (*it)[1].str() : "geq-gain";
        ranges[tag] = {std::stoi((*it)[2]), std::stoi((*it)[3])};
    }
    ASSERT_GE(ranges.size(), 10u) << "the generator's range table was not found";
    std::map<Parameter, std::string> tags = {{Parameter::GEQ_GAIN, "geq-gain"}};
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        if (auto* single = dynamic_cast<SingleParamValueSetter*>(setter)) {
            tags.emplace(single->getParameter(), single->getNodeName());
        }
    }
    int checked = 0;
    for (const SettingsTable::Row& row : SettingsTable::rows()) {
        if (row.parameter == Parameter::IEQ_ID) continue;  // written as a preset name
        auto it = ranges.find(tags[row.parameter]);
        ASSERT_NE(ranges.end(), it) << row.setting.name << " (" << tags[row.parameter] << ")";
        EXPECT_EQ(std::make_pair(row.setting.min, row.setting.max), it->second) << it->first;
        ++checked;
    }
    EXPECT_EQ(15, checked);
}

}  // namespace
}  // namespace vessa
