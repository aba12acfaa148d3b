#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <utility>

#include "protocol/SettingsTable.h"
#include "tuning/SetterCollection.h"
#include "tuning/SingleParamValueSetter.h"

namespace vessa {
namespace {

// The ranges the sample generator checks the values it writes against, by tag.
std::map<std::string, std::pair<int, int>> generatorRanges() {
    std::ifstream in(std::string(VESSA_SOURCE_DIR) + "/scripts/gen-tuning-samples");
    std::stringstream text;
    text << in.rdbuf();
    std::string script = text.str();
    std::map<std::string, std::pair<int, int>> ranges;
    std::regex entry(R"re("([a-z-]+)": \((-?\d+), (-?\d+)\))re");
    size_t begin = script.find("EXPOSED_RANGES = {");
    size_t end = script.find("}", begin);
    std::string table = script.substr(begin, end - begin);
    for (std::sregex_iterator it(table.begin(), table.end(), entry), last; it != last; ++it) {
        ranges[(*it)[1]] = {std::stoi((*it)[2]), std::stoi((*it)[3])};
    }
    std::smatch geq;
    if (std::regex_search(script, geq, std::regex(R"(GEQ_GAIN_RANGE = \((-?\d+), (-?\d+)\))"))) {
        ranges["geq-gain"] = {std::stoi(geq[1]), std::stoi(geq[2])};
    }
    return ranges;
}

TEST(TheSettingsTable, AgreesWithTheRangesOfTheSampleGenerator) {
    std::map<std::string, std::pair<int, int>> ranges = generatorRanges();
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
