#include <gtest/gtest.h>

#include "SampleRoot.h"
#include "TempDir.h"
#include "TuningRecords.h"

namespace vessa::test {
namespace {

class TwoVersionsOfTheSampleFile : public ::testing::Test {
  protected:
    // The sample file with `edit` applied: each pair replaces its first match.
    std::string variant(const std::string& name,
                        const std::vector<std::pair<std::string, std::string>>& edits) {
        std::string text = readFile(sourcePath("etc/multimedia_vessa_zan_default.xml"));
        for (const auto& [from, to] : edits) {
            size_t at = text.find(from);
            EXPECT_NE(std::string::npos, at) << from;
            if (at != std::string::npos) text.replace(at, from.size(), to);
        }
        return dir.write(name, text);
    }
    TuningRecords::Json diff(const std::string& a, const std::string& b) {
        TuningRecords before, after;
        std::string error;
        EXPECT_TRUE(before.load(a, &error)) << error;
        EXPECT_TRUE(after.load(b, &error)) << error;
        return TuningRecords::diff(before.flatten(), after.flatten());
    }
    TempDir dir;
};

TEST_F(TwoVersionsOfTheSampleFile, DifferOnlyWhereARecordReadsDifferently) {
    const std::string original = sourcePath("etc/multimedia_vessa_zan_default.xml");
    // Layout, comments and attribute quoting are not part of what the parser reads.
    const std::string reformatted =
            variant("same.xml",
                    {{"<profile ", "<!-- a note -->\n  <profile  "}, {"value=\"6\"", "value='6'"}});
    EXPECT_EQ(TuningRecords::Json::array(), diff(original, reformatted));

    const std::string changed =
            variant("changed.xml",
                    {{"<dialog-enhancer-amount value=\"6\"", "<dialog-enhancer-amount value=\"7\""},
                     {"name=\"Music\"", "name=\"Songs\""},
                     {"<volume-leveler-amount value=\"7\"", "<volume-leveler-amount value=\"3\""}});
    TuningRecords::Json changes = diff(original, changed);
    std::vector<std::string> lines;
    for (const auto& change : changes) {
        lines.push_back(change["record"].get<std::string>() + ": " +
                        change.value("parameter", change.value("change", std::string())));
    }
    EXPECT_EQ((std::vector<std::string>{"profile 0, endpoint speaker: dialog_enhancer_amount",
                                        "profile 0, endpoint speaker: volume_leveler_amount",
                                        "profile 2: (name)"}),
              lines);
    EXPECT_EQ(6, changes[0]["before"][0]);
    EXPECT_EQ(7, changes[0]["after"][0]);
    EXPECT_EQ("Songs", changes[2]["after"]);
}

}  // namespace
}  // namespace vessa::test
