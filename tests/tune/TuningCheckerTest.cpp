#include <gtest/gtest.h>

#include <algorithm>

#include "SampleRoot.h"
#include "TempDir.h"
#include "TuningChecker.h"

namespace vessa::test {
namespace {

const std::string kDefault = "etc/multimedia_vessa_zan_default.xml";
const std::string kOem = "etc/zan-extra.xml";

// One fault planted into a sample that checks clean: the first match of `from`
// becomes `to`. Each expected finding is at the line of the first match of its
// marker in the edited file (the last match for a marker written "last:..."); a
// "{marker}" in a message stands for that marker's line.
struct Planted {
    const char* fault;
    std::string from, to;
    std::vector<std::pair<std::string, std::string>> expected;  // marker, "severity: message"
    std::string schemaAt;                                       // marker of a schema error, or ""
    bool oem = false;  // the OEM sample, merged into the default one
};

class ATuningChecker : public ::testing::Test {
  protected:
    static int lineOf(const std::string& text, const std::string& marker) {
        const bool last = marker.rfind("last:", 0) == 0;
        size_t at = last ? text.rfind(marker.substr(5)) : text.find(marker);
        EXPECT_NE(std::string::npos, at) << marker;
        if (at == std::string::npos) return 0;
        return 1 + static_cast<int>(std::count(text.begin(), text.begin() + at, '\n'));
    }
    static std::string withLines(const std::string& text, std::string message) {
        for (size_t open; (open = message.find('{')) != std::string::npos;) {
            size_t close = message.find('}', open);
            message.replace(
                    open, close + 1 - open,
                    std::to_string(lineOf(text, message.substr(open + 1, close - open - 1))));
        }
        return message;
    }
    // "line: severity: message" of every finding but the schema's, whose lines go apart.
    std::vector<std::string> check(const std::string& file, const std::string& base,
                                   std::vector<int>* schemaLines = nullptr) {
        std::vector<std::string> lines;
        for (const Finding& f : checker.check(file, base)) {
            EXPECT_EQ(file, f.file);
            if (f.message.rfind("schema: ", 0) == 0 && schemaLines != nullptr) {
                schemaLines->push_back(f.line);
                continue;
            }
            lines.push_back(std::to_string(f.line) + ": " +
                            (f.severity == Finding::Severity::ERROR ? "error: " : "warning: ") +
                            f.message);
        }
        return lines;
    }
    void expectFindings(const Planted& c) {
        std::string text = readFile(sourcePath(c.oem ? kOem : kDefault));
        size_t at = text.find(c.from);
        ASSERT_NE(std::string::npos, at) << c.fault;
        text.replace(at, c.from.size(), c.to);
        std::vector<std::string> expected;
        for (const auto& [marker, message] : c.expected) {
            expected.push_back(std::to_string(lineOf(text, marker)) + ": " +
                               withLines(text, message));
        }
        std::stable_sort(expected.begin(), expected.end(),
                         [](auto& a, auto& b) { return std::stoi(a) < std::stoi(b); });
        std::vector<int> schemaLines;  // one line may hold several schema errors
        const std::string base = c.oem ? sourcePath(kDefault) : "";
        EXPECT_EQ(expected, check(dir.write("planted.xml", text), base, &schemaLines)) << c.fault;
        schemaLines.erase(std::unique(schemaLines.begin(), schemaLines.end()), schemaLines.end());
        EXPECT_EQ(c.schemaAt.empty() ? std::vector<int>{}
                                     : std::vector<int>{lineOf(text, c.schemaAt)},
                  schemaLines)
                << c.fault;
    }

    TempDir dir;
    TuningChecker checker{VESSA_SCHEMA_SOURCE};
};

TEST_F(ATuningChecker, FindsNothingInEitherSample) {
    EXPECT_EQ(std::vector<std::string>{}, check(sourcePath(kDefault), ""));
    EXPECT_EQ(std::vector<std::string>{}, check(sourcePath(kOem), sourcePath(kDefault)));
}

TEST_F(ATuningChecker, ReportsEachPlantedValueFaultAtItsLine) {
    const std::vector<Planted> cases = {
            {"typo",
             "dialog-enhancer-amount value=\"6\"",
             "dialog-enhancer-amout value=\"6\"",
             {{"amout",
               "error: unknown element <dialog-enhancer-amout>: skipped (did you mean "
               "'dialog-enhancer-amount'?)"},
              {"<endpoint_type id=\"speaker\">",
               "warning: profile 0, endpoint speaker lacks <dialog-enhancer-amount>: stored as "
               "NULL, read back as unset"}},
             "amout"},
            {"not a number",
             "<peak-value value=\"64\"/>",
             "<peak-value value=\"ten\"/>",
             {{"\"ten\"", "warning: <peak-value> value 'ten' is not a number: read as 0"}},
             "\"ten\""},
            {"partly a number",
             "<peak-value value=\"64\"/>",
             "<peak-value value=\"12abc\"/>",
             {{"12abc", "warning: <peak-value> value '12abc' is not a plain number: read as 12"}},
             "12abc"},
            {"list stops",
             "value=\"2,100,100\"",
             "value=\"2,1OO,100\"",
             {{"1OO",
               "warning: <drc-metadata> value '2,1OO,100' is not a list of numbers from "
               "'OO,100' on: read as 2,1"}},
             "1OO"},
            {"outside a setting's range",
             "<dialog-enhancer-amount value=\"6\"/>",
             "<dialog-enhancer-amount value=\"20\"/>",
             {{"value=\"20\"",
               "warning: <dialog-enhancer-amount> value 20 is outside 0..16 of setting "
               "dialog-enhancer-amount: the service uses it unchecked"}},
             ""},
            {"GEQ gain outside its range",
             "gain=\"384\"",
             "gain=\"700\"",
             {{"\"700\"",
               "warning: <band_geq_00> value 700 is outside -576..576 of setting "
               "geq-gains: the service uses it unchecked"}},
             ""},
            {"band without target",
             "frequency=\"136\" target=\"0\"",
             "frequency=\"136\"",
             {{"frequency=\"136\"/>",
               "warning: <band_ieq> target is missing: the target list "
               "of <preset> ends here, with 1 value for 20 bands"}},
             "frequency=\"136\"/>"},
            {"IEQ band of another name",
             "<band_ieq frequency=\"1098\" target=\"0\"/>",
             "<band frequency=\"1098\" target=\"0\"/>",
             {{"<band ",
               "warning: <band> is not a <band_ieq>: the IEQ bands end here, it and "
               "later elements are not read"}},
             "<band "},
            {"misspelt attribute",
             "<volmax-boost value=\"144\"/>",
             "<volmax-boost vlaue=\"144\"/>",
             {{"vlaue", "warning: <volmax-boost> has no value: read as 0"},
              {"vlaue",
               "warning: attribute vlaue of <volmax-boost> is not read (did you mean "
               "'value'?)"}},
             "vlaue"},
            {"text for a value",
             "<peak-value value=\"64\"/>",
             "<peak-value value=\"64\">9</peak-value>",
             {{">9<",
               "warning: the text inside <peak-value> is not read: values go in "
               "attributes"}},
             ">9<"},
            {"missing tuning attribute",
             "mono_device=\"false\" orientation=\"0\"",
             "mono_device=\"false\"",
             {{"<tuning name=\"speaker_stereo", "warning: <tuning> has no orientation: read as 0"}},
             "<tuning name=\"speaker_stereo"},
            {"unknown port",
             "endpoint_port=\"usb\"",
             "endpoint_port=\"usbc\"",
             {{"usbc",
               "warning: endpoint_port 'usbc' is not internal_speaker, hdmi, miracast, "
               "headphone, bluetooth or usb: the device is offered on no port"}},
             "usbc"},
    };
    for (const Planted& c : cases) expectFindings(c);
}

TEST_F(ATuningChecker, ReportsWhatTheWalkSkipsDropsOrSpillsAtItsLine) {
    const std::string tuning =
            "<tuning name=\"x\" endpoint_type=\"speaker\" mono_device=\"false\" orientation=\"0\" "
            "output_channels=\"2\"";
    const std::vector<Planted> cases = {
            {"self-closed tuning",
             "    <tuning name=\"speaker_stereo",
             "    " + tuning + "/>\n    <tuning name=\"speaker_stereo",
             {{"name=\"x\"",
               "error: tuning 'x' is empty: it has no settings, and the 12 elements "
               "after it are looked up as its settings"}},
             "name=\"x\""},
            {"tuning without data",
             "    <tuning name=\"speaker_stereo",
             "    " + tuning +
                     ">\n<device_id id=\"orphan\" endpoint_port=\"usb\"/>\n</tuning>\n    <tuning "
                     "name=\"speaker_stereo",
             {{"name=\"x\"",
               "error: tuning 'x' has no data section: it is dropped, and nothing "
               "after it is read"},
              {"orphan",
               "error: device 'orphan' maps to tuning 'x', which is dropped: the device "
               "has no tuning"},
              {"name=\"speaker_stereo",
               "error: <tuning> and the 11 elements after it are not "
               "read: the service stops reading at the tuning without "
               "data (line {name=\"x\"})"}},
             "name=\"x\""},
            {"self-closed endpoint",
             "<endpoint_type id=\"speaker\">",
             "<endpoint_type id=\"other\"/>\n<endpoint_type id=\"speaker\">",
             {{"\"other\"/>",
               "error: profile 0, endpoint other is empty: no settings, IEQ preset "
               "off, and the 3 elements after it are read as its settings"},
              {"<endpoint_type id=\"other\">",
               "error: duplicate profile 0, endpoint other (first "
               "at line {\"other\"/>}): either may win"}},
             ""},
            {"comment before include",
             "<include preset=\"ieq_balanced\"/>",
             "<!-- balanced -->\n<include preset=\"ieq_balanced\"/>",
             {{"<!-- balanced",
               "error: the comment before <include> hides it: the IEQ preset of profile 0, "
               "endpoint speaker is off"}},
             ""},
            {"comment before data",
             "group=\"entertainment\">",
             "group=\"entertainment\">\n<!-- x -->",
             {{"<!-- x",
               "error: the comment before <data> hides it: profile 0 gets no settings "
               "and no endpoints"},
              {"name=\"Dynamic\"",
               "error: profile 0 has no speaker, headphone or other endpoint: "
               "the service exits when it looks one up"}},
             ""},
            {"compact first child",
             "<data>\n            <drc-metadata",
             "<data><drc-metadata",
             {{"<data><drc",
               "error: <drc-metadata> is not read: the service steps over the first "
               "node inside <data> (start <drc-metadata> on a new line)"},
              {"name=\"Dynamic\"",
               "warning: profile 0 lacks <drc-metadata>: stored as NULL, read "
               "back as unset"}},
             ""},
            {"setting in the wrong record",
             "<include preset=\"ieq_balanced\"/>",
             "<include preset=\"ieq_balanced\"/><bass-enhancer-boost value=\"3\"/>",
             {{"boost value=\"3\"",
               "warning: <bass-enhancer-boost> is not stored for profile 0, "
               "endpoint speaker: it belongs in a tuning's data"}},
             "boost value=\"3\""},
            {"surround list of a quad tuning",
             "<complex-equalizer-tuning-left-surround value=\"1,180,707,-24\"/>",
             "",
             {{"name=\"speaker_quad",
               "warning: tuning 'speaker_quad_landscape' lacks "
               "<complex-equalizer-tuning-left-surround>: stored as NULL, "
               "read back as unset"}},
             ""},
            {"self-closed band list",
             "        </data>\n    </tuning>",
             "<audio-optimizer-bands/>\n        </data>\n    </tuning>",
             {{"<audio-optimizer-bands/>",
               "error: <audio-optimizer-bands> has no child "
               "elements: it reads itself as its bands"}},
             "<audio-optimizer-bands/>"},
            {"comment inside a setter",
             "<mix-matrix>",
             "<!-- 2x2 -->\n<mix-matrix>",
             {{"2x2",
               "error: the comment before <mix-matrix> hides it: <output-mode> stores "
               "nothing"}},
             ""},
            {"preset of another type",
             "type=\"geq\"",
             "type=\"GEQ\"",
             {{"GEQ", "warning: preset type 'GEQ' is neither ieq nor geq: the preset is ignored"}},
             "GEQ"},
            {"duplicate profile id",
             "<profile id=\"1\"",
             "<profile id=\"0\"",
             {{"name=\"Movie\"",
               "error: duplicate profile id 0 (first at line {\"Dynamic\"}): "
               "either may win"}},
             ""},
            {"duplicate tuning name",
             "name=\"speaker_quad_landscape\"",
             "name=\"speaker_stereo_landscape\"",
             {{"last:speaker_stereo_landscape",
               "error: duplicate tuning name "
               "'speaker_stereo_landscape' (first at line "
               "{speaker_stereo}): either may win"}},
             ""},
            {"duplicate device id",
             "id=\"internal_speaker_quad\"",
             "id=\"default_internal_speaker\"",
             {{"last:default_internal_speaker",
               "error: duplicate device id "
               "'default_internal_speaker' (first at line "
               "{default_internal_speaker}): either may win"}},
             ""},
            {"OEM device of the default file",
             "<device_id id=\"bt_neckband_x1\" endpoint_port=\"bluetooth\"/>",
             "<device_id id=\"bt_neckband_x1\" endpoint_port=\"bluetooth\"/>\n"
             "        <device_id id=\"bt_earbuds_a\" endpoint_port=\"bluetooth\"/>",
             {{"bt_earbuds_a",
               "warning: device id 'bt_earbuds_a' is in the default file too: the merge drops "
               "it"}},
             "",
             true},
            {"OEM tuning of the default file",
             "name=\"oem_usb_headset\"",
             "name=\"headphone_generic\"",
             {{"headphone_generic",
               "warning: tuning 'headphone_generic' is in the default file too: the merge drops "
               "it"},
              {"usb_headset_oem",
               "warning: device 'usb_headset_oem' maps to the dropped tuning 'headphone_generic': "
               "the merge drops it"}},
             "",
             true},
            {"OEM of another format",
             "minor=\"3\"",
             "minor=\"2\"",
             {{"minor=\"2\"",
               "error: format version 3.2.0 differs from the default file's 3.3.0: "
               "the merge refuses the whole file"}},
             "",
             true},
    };
    for (const Planted& c : cases) expectFindings(c);
}

TEST_F(ATuningChecker, ReadsValuesWrittenWithReferencesAsTheServiceDoes) {
    // An entity of the file's own stays a node of its own inside the value; a
    // character reference becomes text. Both read as the service's xmlGetProp does.
    std::string text = readFile(sourcePath(kDefault));
    const auto plant = [&text](const std::string& from, const std::string& to) {
        text.replace(text.find(from), from.size(), to);
    };
    plant("<vessa_tuning>", "<!DOCTYPE vessa_tuning [<!ENTITY six \"6\">]><vessa_tuning>");
    plant("<dialog-enhancer-amount value=\"6\"/>", "<dialog-enhancer-amount value=\"&six;\"/>");
    plant("<peak-value value=\"64\"/>", "<peak-value value=\"&six;&#52;x\"/>");
    std::vector<int> schemaLines;
    EXPECT_EQ((std::vector<std::string>{std::to_string(lineOf(text, "&#52;x")) +
                                        ": warning: <peak-value> value '64x' is not a plain "
                                        "number: read as 64"}),
              check(dir.write("references.xml", text), "", &schemaLines));
    EXPECT_EQ(std::vector<int>{lineOf(text, "&#52;x")}, schemaLines);
}

TEST_F(ATuningChecker, ReportsAFileTheServiceCannotRead) {
    const std::string path = dir.write("broken.xml", "<vessa_tuning>\n<tuning>\n</vessa_tuning>\n");
    EXPECT_EQ((std::vector<std::string>{
                      "0: error: cannot be read as XML: the service keeps its previous tunings",
                      "3: error: Opening and ending tag mismatch: tuning line 2 and vessa_tuning",
                      "4: error: Premature end of data in tag vessa_tuning line 1"}),
              check(path, ""));
}

}  // namespace
}  // namespace vessa::test
