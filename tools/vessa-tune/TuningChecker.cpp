#include "TuningChecker.h"

#include <android/log.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cctype>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

#include "Suggest.h"
#include "model/ParameterValues.h"
#include "model/StringUtils.h"
#include "model/Vocabulary.h"
#include "protocol/SettingsTable.h"
#include "storage/DatabaseSchema.h"
#include "tuning/AudioOptimizerValueSetter.h"
#include "tuning/DrcRowDataValueSetter.h"
#include "tuning/GeqValueSetter.h"
#include "tuning/IeqValueSetter.h"
#include "tuning/MixMatrixValueSetter.h"
#include "tuning/NodeParseUtils.h"
#include "tuning/RegulatorTuningValueSetter.h"
#include "tuning/RowDataValueSetter.h"
#include "tuning/SetterCollection.h"
#include "tuning/SimpleValueSetter.h"
#include "tuning/TagIterator.h"
#include "tuning/TuningFileParser.h"
#include "tuning/VirtualBassSubgainValueSetter.h"
#include "tuning/VirtualBassValueSetter.h"

// The checker walks the document with the service's own moves (a TagIterator whose
// moves are traced) and runs the service's own setters on it, so that what it
// reports is what the service reads; the parser's decisions around the setters are
// followed step by step below, in the parser's order.

namespace vessa {

namespace {

constexpr Finding::Severity kError = Finding::Severity::ERROR;
constexpr Finding::Severity kWarning = Finding::Severity::WARNING;

const char* const kEndpointNames[] = {"speaker", "headphone", "other"};
// Output channels of a stereo tuning: its surround lists are never sent.
constexpr int kStereo = 2;

std::string_view nameView(const xmlNode* n) {
    return n != nullptr && n->name != nullptr ? reinterpret_cast<const char*>(n->name) : "";
}

std::string nameOf(const xmlNode* n) {
    return std::string(nameView(n));
}

std::string tagOf(const xmlNode* n) {
    return "<" + nameOf(n) + ">";
}

int lineOf(const xmlNode* n) {
    return n != nullptr ? static_cast<int>(xmlGetLineNo(n)) : 0;
}

bool isElement(const xmlNode* n) {
    return n != nullptr && n->type == XML_ELEMENT_NODE;
}

bool isBlank(std::string_view text) {
    // The usual blanks first: std::isspace asks the locale, for every character.
    return std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c == ' ' || c == '\n' || c == '\t' || c == '\r' || std::isspace(c) != 0;
    });
}

const char* nameOf(const xmlAttr* a) {
    return reinterpret_cast<const char*>(a->name);
}

// The value xmlGetProp gives (the first attribute so named, else a default from the
// document's DTD), read in place where it is one text node: the walk reads every
// value, and copying each one showed in its time. `scratch` holds the value when
// libxml2 has to build it (entity references, DTD defaults).
std::optional<std::string_view> attributeText(const xmlNode* n, const char* name,
                                              std::string* scratch) {
    if (!isElement(n)) return std::nullopt;
    const xmlAttr* a = n->properties;
    while (a != nullptr && !xmlStrEqual(a->name, reinterpret_cast<const xmlChar*>(name))) {
        a = a->next;
    }
    if (a == nullptr && (n->doc == nullptr || n->doc->intSubset == nullptr)) return std::nullopt;
    if (a != nullptr && a->children == nullptr) return std::string_view();
    const xmlNode* text = a != nullptr ? a->children : nullptr;
    if (text != nullptr && text->next == nullptr && text->content != nullptr &&
        (text->type == XML_TEXT_NODE || text->type == XML_CDATA_SECTION_NODE)) {
        return std::string_view(reinterpret_cast<const char*>(text->content));
    }
    xmlChar* raw = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
    if (raw == nullptr) return std::nullopt;
    *scratch = reinterpret_cast<const char*>(raw);
    xmlFree(raw);
    return std::string_view(*scratch);
}

bool attribute(const xmlNode* n, const std::string& name, std::string* value) {
    std::string scratch;
    std::optional<std::string_view> text = attributeText(n, name.c_str(), &scratch);
    if (text) value->assign(*text);
    return text.has_value();
}

const xmlNode* nextElement(const xmlNode* n) {
    while (n != nullptr && !isElement(n)) n = n->next;
    return n;
}

bool isInside(const xmlNode* n, const xmlNode* ancestor) {
    for (const xmlNode* p = n; p != nullptr; p = p->parent) {
        if (p == ancestor) return true;
    }
    return false;
}

// "comment" for a node that stands where an element is expected; whitespace right
// after a comment counts as the comment's.
std::string kindOf(const xmlNode* n) {
    if (n->type == XML_TEXT_NODE && n->prev != nullptr && n->prev->type == XML_COMMENT_NODE) {
        return "comment";
    }
    switch (n->type) {
        case XML_COMMENT_NODE:
            return "comment";
        case XML_PI_NODE:
            return "processing instruction";
        case XML_CDATA_SECTION_NODE:
            return "CDATA section";
        default:
            return "text";
    }
}

std::string joined(const std::vector<int>& values) {
    if (values.empty()) return "nothing";
    std::string text;
    for (int v : values) text += (text.empty() ? "" : ",") + std::to_string(v);
    return text;
}

std::string plural(size_t n, const std::string& what) {
    return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
}

// Reading a number as string2Int does: how much of the text it used.
enum class NumberText { CLEAN, NONE, PARTIAL, OUT_OF_RANGE };

NumberText classify(std::string_view text) {
    const char* cursor = text.data();
    const char* end = cursor + text.size();
    int value = 0;
    IntRead read = readInt(cursor, end, value);
    if (read == IntRead::NO_NUMBER) return NumberText::NONE;
    if (read == IntRead::OUT_OF_RANGE) return NumberText::OUT_OF_RANGE;
    return isBlank(std::string_view(cursor, end - cursor)) ? NumberText::CLEAN
                                                           : NumberText::PARTIAL;
}

// A list read as string2IntVector reads it, with the offset where reading stopped.
struct ListRead {
    std::vector<int> values;
    std::vector<size_t> offsets;  // where each value began
    size_t stop;                  // text.size() when nothing is left unread
};

ListRead readList(std::string_view text) {
    ListRead list;
    const char* begin = text.data();
    const char* end = begin + text.size();
    const char* cursor = begin;
    for (;;) {
        const char* at = cursor;
        int value = 0;
        if (readInt(cursor, end, value) != IntRead::IN_RANGE) {
            list.stop = isBlank(std::string_view(at, end - at)) ? text.size() : at - begin;
            return list;
        }
        list.values.push_back(value);
        list.offsets.push_back(at - begin);
        if (cursor != end && (*cursor == ',' || *cursor == ' ')) ++cursor;
    }
}

// The parser's name rule for IEQ presets, and whether the name names one (the
// parser only logs that).
PresetType presetTypeOf(const std::string& name, bool* known) {
    PresetType type = PresetType::OFF;
    *known = TuningFileParser::findIeqPresetType(name, &type);
    return type;
}

// The service's classes log what they meet; the checker reports it as findings.
class QuietLog {
  public:
    QuietLog() : mPrevious(__android_log_set_minimum_priority(ANDROID_LOG_SILENT)) {}
    ~QuietLog() { __android_log_set_minimum_priority(mPrevious); }

  private:
    int32_t mPrevious;
};

// A record's values, without a record class: only the parameters count here.
class Values : public ParameterValues {
  public:
    int64_t getId() const override { return -1; }
    const ParamSet& getValidParams() const override {
        static const ParamSet kNone;
        return kNone;
    }
};

// A mark on the nodes (or attributes) of the document being checked, kept in
// libxml2's application field: a set of nodes without an allocation per node.
class NodeMarks {
  public:
    explicit NodeMarks(uintptr_t bit) : mBit(bit) {}
    template <typename Node>
    void insert(const Node* n) const {
        const_cast<Node*>(n)->_private =
                reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(n->_private) | mBit);
    }
    template <typename Node>
    size_t count(const Node* n) const {
        return (reinterpret_cast<uintptr_t>(n->_private) & mBit) != 0 ? 1 : 0;
    }

  private:
    uintptr_t mBit;
};

// The service's cursor, tracing what the setters and the parser do with it: where
// childrenNext stayed (no child) or stepped over an element, and which attributes
// were read from which element.
class Walker : public TagIterator {
  public:
    enum class ReadKind { NAMED, FIRST, ALL };
    struct Read {
        xmlNodePtr node;
        ReadKind kind;
    };

    xmlNodePtr at() const { return mCurrent; }
    void moveTo(xmlNodePtr node) { mCurrent = node; }

    void next() override {
        if (mCurrent != nullptr) mCurrent = mCurrent->next;
    }
    void childrenNext() override {
        if (mCurrent == nullptr) return;
        if (mCurrent->children == nullptr) {
            stays.push_back(mCurrent);
            return;
        }
        if (isElement(mCurrent->children)) skips.push_back(mCurrent->children);
        entered.insert(mCurrent);
        mCurrent = mCurrent->children->next;
    }
    bool isChildrenValid() const override {
        return mCurrent != nullptr && mCurrent->children != nullptr;
    }
    bool isNextValid() const override { return mCurrent != nullptr && mCurrent->next != nullptr; }
    bool isCurValid() const override { return mCurrent != nullptr; }
    bool isElementNode() const override { return isElement(mCurrent); }
    void pushNode() override { mStack.push_back(mCurrent); }
    void popNode() override {
        if (mStack.empty()) return;
        mCurrent = mStack.back();
        mStack.pop_back();
    }
    std::string getNodeName() const override { return nameOf(mCurrent); }

    void parseNodeIntVector(std::vector<int>& out) const override {
        if (!isElement(mCurrent)) return;
        reads.push_back({mCurrent, ReadKind::ALL});
        for (xmlAttrPtr a = mCurrent->properties; a != nullptr; a = a->next) {
            attrsRead.insert(a);
            out.push_back(string2Int(std::string(valueOf(a))));
        }
        allAttrsRead.insert(mCurrent);
    }
    // With no names (parseNodeAll), every value comes back, but the service's
    // readers use the first one only.
    void parseNodeWithName(const std::vector<std::string>& names,
                           std::vector<std::string>& out) const override {
        if (!isElement(mCurrent)) return;
        reads.push_back({mCurrent, names.empty() ? ReadKind::FIRST : ReadKind::NAMED});
        if (!names.empty()) out.resize(names.size());
        bool unmatched = false;
        bool all = true;  // every attribute without a namespace is read by now
        for (xmlAttrPtr a = mCurrent->properties; a != nullptr; a = a->next) {
            if (names.empty()) {
                if (a == mCurrent->properties) attrsRead.insert(a);
                all = all && (a->ns != nullptr || attrsRead.count(a) != 0);
                out.emplace_back(valueOf(a));
                continue;
            }
            bool stored = false;
            for (size_t i = 0; i < names.size(); ++i) {
                if (names[i] != nameOf(a)) continue;
                attrsRead.insert(a);
                if (stored) {
                    out[i].clear();
                } else {
                    out[i].assign(valueOf(a));
                    stored = true;
                }
            }
            unmatched = unmatched || !stored;
            all = all && (a->ns != nullptr || attrsRead.count(a) != 0);
        }
        if (all) allAttrsRead.insert(mCurrent);
        // The names asked for matter only to suggest one for an attribute never read.
        if (unmatched) asked[mCurrent].insert(names.begin(), names.end());
    }

    mutable std::vector<Read> reads;
    const NodeMarks attrsRead{1};
    mutable std::map<const xmlNode*, std::set<std::string>> asked;
    std::vector<xmlNodePtr> stays;
    std::vector<xmlNodePtr> skips;
    const NodeMarks entered{2};
    // The element's attributes were all read (those in a namespace aside), told while
    // they are at hand: looking again at the end of the walk costs a cache miss each.
    const NodeMarks allAttrsRead{16};

  private:
    // As the service reads an attribute: by its name, so the first one so named.
    std::string_view valueOf(const xmlAttr* a) const {
        return attributeText(mCurrent, nameOf(a), &mScratch).value_or(std::string_view());
    }

    xmlNodePtr mCurrent = nullptr;
    std::deque<xmlNodePtr> mStack;
    mutable std::string mScratch;
};

// What the checker looks at in an element, by the class of its setter: decided once
// per setter, not per element.
enum class SetterKind {
    SIMPLE,
    ROW,
    DRC_ROW,
    SUBGAIN,
    VIRTUAL_BASS,
    MIX_MATRIX,
    IEQ,
    GEQ,
    AUDIO_OPTIMIZER,
    REGULATOR,
    OTHER
};

template <typename Class>
bool is(const ValueSetter* setter) {
    return dynamic_cast<const Class*>(setter) != nullptr;
}

SetterKind setterKindOf(const ValueSetter* setter) {
    // A derived class before its base.
    const std::pair<bool, SetterKind> kinds[] = {
            {is<SimpleValueSetter>(setter), SetterKind::SIMPLE},
            {is<DrcRowDataValueSetter>(setter), SetterKind::DRC_ROW},
            {is<RowDataValueSetter>(setter), SetterKind::ROW},
            {is<VirtualBassSubgainValueSetter>(setter), SetterKind::SUBGAIN},
            {is<VirtualBassValueSetter>(setter), SetterKind::VIRTUAL_BASS},
            {is<MixMatrixValueSetter>(setter), SetterKind::MIX_MATRIX},
            {is<IeqValueSetter>(setter), SetterKind::IEQ},
            {is<GeqValueSetter>(setter), SetterKind::GEQ},
            {is<AudioOptimizerValueSetter>(setter), SetterKind::AUDIO_OPTIMIZER},
            {is<RegulatorTuningValueSetter>(setter), SetterKind::REGULATOR}};
    for (const auto& [matches, kind] : kinds) {
        if (matches) return kind;
    }
    return SetterKind::OTHER;
}

struct Setter {
    const ValueSetter* setter;
    SetterKind kind;
};

// The setters of the service by element name, and the element that fills each
// parameter. The setters do not tell which parameters they fill, so each is run
// once on an empty walk, where it stores defaults into every one of them.
struct SetterTable {
    std::map<std::string, Setter, std::less<>> byName;
    std::vector<std::string> names;
    std::map<Parameter, std::string> elementOf;
};

const SetterTable& setterTable() {
    static const SetterTable table = [] {
        SetterTable t;
        Walker nowhere;
        for (const ValueSetter* setter : SetterCollection::kAllValueSetters) {
            const std::string name = setter->getNodeName();
            if (!t.byName.emplace(name, Setter{setter, setterKindOf(setter)}).second) continue;
            t.names.push_back(name);
            Values probe;
            setter->set(probe, nowhere);
            for (const auto& entry : probe.values()) t.elementOf.emplace(entry.first, name);
        }
        return t;
    }();
    return table;
}

std::string elementFor(Parameter p) {
    auto found = setterTable().elementOf.find(p);
    return found != setterTable().elementOf.end() ? "<" + found->second + ">" : parameterName(p);
}

// The settings rows of each parameter, for the range of every value read.
const std::vector<const SettingsTable::Row*>& settingsOf(Parameter p) {
    static const auto kRows = [] {
        std::array<std::vector<const SettingsTable::Row*>, kNumParameters> rows;
        for (const SettingsTable::Row& row : SettingsTable::rows()) {
            rows[toInt(row.parameter)].push_back(&row);
        }
        return rows;
    }();
    return kRows[toInt(p)];
}

// A record's values by parameter, in flat tables: a record is filled once and
// looked up by every parameter column.
struct Record {
    std::string label;
    xmlNodePtr node;
    TableType table;
    std::bitset<kNumParameters> held;
    std::array<std::vector<int>, kNumParameters> values;
    std::array<xmlNodePtr, kNumParameters> from{};  // the element that set each parameter
    bool broken = false;                            // reported as misread as a whole
    int channels = 0;

    bool holds(Parameter p) const { return held[toInt(p)]; }
    void set(Parameter p, std::vector<int> list) {
        held[toInt(p)] = true;
        values[toInt(p)] = std::move(list);
    }
    // The values of the first parameter held: a one-parameter setter's.
    const std::vector<int>& firstValues() const {
        size_t i = 0;
        while (i + 1 < held.size() && !held[i]) ++i;
        return values[i];
    }
};

// What an OEM file is merged against: the default file's version, tunings and devices.
struct Defaults {
    std::string formatVersion;
    std::set<std::string> tunings;
    std::set<std::string> devices;
};

// What a data section is walked for: which names mean something besides setters.
enum class Section { TUNING, PROFILE, ENDPOINT };

// One file's check: the service's walk over it and what it reads, skips and drops.
class Check {
  public:
    Check(std::string file, bool oem) : mFile(std::move(file)), mOem(oem) {}
    ~Check() {
        // Before the walker, whose destruction resets libxml2 (as the service's does).
        if (mDoc != nullptr) xmlFreeDoc(mDoc);
    }

    bool load();
    void walk();
    // The schema's findings. Validation only reads the document (the walk writes no
    // more than its marks in the nodes' application field), so it may run beside the walk.
    std::vector<Finding> validate(const std::string& schemaPath) const;
    void mergeInto(const Defaults& base);
    Defaults defaults() const;

    std::vector<Finding> findings;
    std::string formatVersion;

  private:
    void add(Finding::Severity severity, const xmlNode* n, const std::string& message) {
        findings.push_back({severity, mFile, lineOf(n), message});
    }
    bool v32() const { return formatVersion.compare(0, 4, "3.2.") == 0; }
    bool v322() const { return formatVersion.compare(0, 5, "3.2.2") == 0; }

    std::vector<std::string> read(xmlNodePtr n, const std::vector<std::string>& names);
    int number(xmlNodePtr n, const char* attr, const char* missing, bool flags = false);
    void version(xmlNodePtr n, std::string* into);
    void technologies(xmlNodePtr n);
    void preset(xmlNodePtr n);
    void profile(xmlNodePtr n);
    // What the parser finds where it looks for an <include>: the preset, or else off.
    void include(const xmlNode* at, xmlNodePtr owner, const std::string& label);
    void endpoint(xmlNodePtr n, Record& profile, int ieqEnable, int ieqAmount,
                  std::set<std::string>* seen);
    bool tuning(xmlNodePtr n);
    // The setters of the container's child elements (applySetters); the number of
    // elements walked outside the container when it has no child to step into.
    size_t settings(xmlNodePtr container, Record& record, Section section,
                    const std::function<void(xmlNodePtr)>& other = nullptr);
    void apply(xmlNodePtr n, const Setter& setter, Record* record, bool analyse = true);
    void analyse(xmlNodePtr n, SetterKind kind, const Values& values, Record* record,
                 size_t firstRead, size_t firstStay);
    void checkText(xmlNodePtr n, std::string_view attr, std::string_view text, bool flags);
    void checkRow(xmlNodePtr n, bool drc, const char* empty = "it stores an empty list");
    void checkBandLists(xmlNodePtr n, const std::vector<xmlNodePtr>& bands,
                        const std::vector<std::string>& attrs, Parameter second);
    bool misplaced(xmlNodePtr n, SetterKind kind, const std::vector<xmlNodePtr>& bands,
                   const Values& values, Record* record, size_t firstStay);
    void checkRange(xmlNodePtr n, Parameter p, int value);
    // The setter of the element's name, or null.
    const Setter* setterOf(const xmlNode* e);
    void replaced(Record& record, Parameter p, int value, const std::string& why);
    void unread(xmlNodePtr parent);
    void lacking(const Record& record);

    std::string mFile;
    bool mOem;
    Walker mWalker;
    xmlDocPtr mDoc = nullptr;
    int mVirtualBassType = 1;
    const xmlNode* mFormatNode = nullptr;
    const xmlNode* mTechnologiesReadEarly = nullptr;
    const NodeMarks mHandled{4};                          // the walk used the element
    const NodeMarks mExplained{8};                        // it has a finding of its own
    std::map<const xmlNode*, std::string> mUnreadReason;  // elements only: only they are told
    std::vector<xmlNodePtr> mBands;                       // the elements one setter read
    // Setters by the name's address: libxml2 keeps one copy of each name per document.
    std::unordered_map<const xmlChar*, const Setter*> mSetterOf;
    std::vector<std::unique_ptr<Record>> mRecords;
    std::map<std::string, const xmlNode*> mFirst;  // "kind key" to its first element

    struct Named {
        std::string name;
        xmlNodePtr node;
        std::string tuning;  // devices: the tuning they map to
        bool kept;           // tunings: the parser keeps it
    };
    std::vector<Named> mTunings;
    std::vector<Named> mDevices;
};

void collectError(void* context, xmlErrorPtr error) {
    auto* errors = static_cast<std::vector<std::pair<int, std::string>>*>(context);
    std::string message = error->message != nullptr ? error->message : "";
    while (!message.empty() && std::isspace(static_cast<unsigned char>(message.back()))) {
        message.pop_back();
    }
    // libxml2 lists up to ten expected names; the element and the fault are enough.
    size_t expected = message.find(" Expected is one of (");
    if (expected != std::string::npos) message.erase(expected);
    errors->emplace_back(error->line, message);
}

bool Check::load() {
    std::vector<std::pair<int, std::string>> errors;
    xmlStructuredErrorFunc previous = xmlStructuredError;
    void* previousContext = xmlStructuredErrorContext;
    xmlSetStructuredErrorFunc(&errors, collectError);
    // Read as the service reads it: whitespace stays in the tree. Compact storage of
    // short texts changes no node, only saves an allocation for each.
    mDoc = xmlReadFile(mFile.c_str(), nullptr, XML_PARSE_COMPACT);
    xmlSetStructuredErrorFunc(previousContext, previous);
    for (const auto& [line, message] : errors) {
        findings.push_back({mDoc != nullptr ? kWarning : kError, mFile, line, message});
    }
    if (mDoc == nullptr) {
        findings.push_back({kError, mFile, 0,
                            "cannot be read as XML: the service keeps its previous tunings"});
        return false;
    }
    if (xmlDocGetRootElement(mDoc) == nullptr) {
        findings.push_back({kError, mFile, 0, "no root element: the service reads nothing"});
        return false;
    }
    return true;
}

std::vector<std::string> Check::read(xmlNodePtr n, const std::vector<std::string>& names) {
    std::vector<std::string> values;
    mWalker.moveTo(n);
    mWalker.parseNodeWithName(names, values);
    values.resize(names.size());
    if (isElement(n)) mHandled.insert(n);
    return values;
}

void Check::checkText(xmlNodePtr n, std::string_view attr, std::string_view text, bool flags) {
    if (flags && (text == "true" || text == "false")) return;
    const NumberText kind = classify(text);
    if (kind == NumberText::CLEAN) return;
    const std::string what = tagOf(n) + " " + std::string(attr) + " '" + std::string(text) + "'";
    const std::string readAs = std::to_string(string2Int(std::string(text)));
    switch (kind) {
        case NumberText::CLEAN:
            return;
        case NumberText::NONE:
            add(kWarning, n, what + " is not a number: read as 0");
            return;
        case NumberText::PARTIAL:
            add(kWarning, n, what + " is not a plain number: read as " + readAs);
            return;
        case NumberText::OUT_OF_RANGE:
            add(kWarning, n, what + " is out of range: read as " + readAs);
            return;
    }
}

int Check::number(xmlNodePtr n, const char* attr, const char* missing, bool flags) {
    std::string scratch;
    std::optional<std::string_view> text = attributeText(n, attr, &scratch);
    if (!text) {
        if (*missing != '\0') {
            add(kWarning, n, tagOf(n) + " has no " + attr + ": " + missing);
        }
        return 0;
    }
    checkText(n, attr, *text, flags);
    if (flags && (*text == "true" || *text == "false")) return *text == "true" ? 1 : 0;
    return string2Int(std::string(*text));
}

void Check::walk() {
    xmlNodePtr root = xmlDocGetRootElement(mDoc);
    mHandled.insert(root);
    // First pass: the versions and the technologies, wherever they stand.
    const xmlNode* tool = nullptr;
    for (xmlNodePtr n = root->children; n != nullptr; n = n->next) {
        const std::string name = nameOf(n);
        if (!isElement(n)) continue;
        if (name == "format_version") {
            if (mFormatNode != nullptr) {
                add(kWarning, n, "<format_version> again: this later one counts");
            }
            mFormatNode = n;
            version(n, &formatVersion);
        } else if (name == "tool_version") {
            if (tool != nullptr) add(kWarning, n, "<tool_version> again: this later one counts");
            tool = n;
            std::string ignored;
            version(n, &ignored);
        } else if (name == "authorized_technologies" && !mOem) {
            technologies(n);
        }
    }
    if (mFormatNode == nullptr) {
        add(kWarning, root, "no <format_version>: the format version is empty");
    }
    if (mTechnologiesReadEarly != nullptr && v32()) {
        add(kWarning, mTechnologiesReadEarly,
            "<authorized_technologies> stands before <format_version>: its type " +
                    std::to_string(mVirtualBassType) + " counts, not the 2 of a 3.2 file");
    }

    // Second pass: the records, in document order.
    for (xmlNodePtr n = root->children; n != nullptr; n = n->next) {
        if (!isElement(n)) continue;
        const std::string name = nameOf(n);
        if (mOem && (name == "preset" || name == "profile" || name == "authorized_technologies")) {
            add(kWarning, n, tagOf(n) + " in an OEM file is not merged: only tunings are");
            mExplained.insert(n);
            continue;
        }
        if (name == "preset") {
            preset(n);
        } else if (name == "profile") {
            profile(n);
        } else if (name == "tuning") {
            if (tuning(n)) continue;
            // The parser lost its place: nothing after this tuning is read.
            for (xmlNodePtr later = n->next; later != nullptr; later = later->next) {
                if (!isElement(later)) continue;
                mUnreadReason[later] =
                        "the service stops reading at the tuning without data (line " +
                        std::to_string(lineOf(n)) + ")";
            }
            break;
        } else if (name != "format_version" && name != "tool_version" &&
                   name != "authorized_technologies") {
            static const std::vector<std::string> kTopLevel = {
                    "format_version", "tool_version", "authorized_technologies",
                    "preset",         "profile",      "tuning"};
            add(kError, n,
                "unknown element " + tagOf(n) + ": skipped" + Suggest::hint(name, kTopLevel));
            mExplained.insert(n);
        }
    }

    for (const Walker::Read& r : mWalker.reads) mHandled.insert(r.node);
    for (const xmlNode* skipped : mWalker.skips) {
        if (mHandled.count(skipped) != 0 || mWalker.entered.count(skipped) != 0) continue;
        add(kError, skipped,
            tagOf(skipped) + " is not read: the service steps over the first node inside " +
                    tagOf(skipped->parent) + " (start " + tagOf(skipped) + " on a new line)");
        mExplained.insert(skipped);
    }
    unread(root);
    for (const auto& record : mRecords) lacking(*record);
}

void Check::version(xmlNodePtr n, std::string* into) {
    static const std::vector<std::string> kParts = {"major", "minor", "maintenance"};
    std::vector<std::string> parts = read(n, kParts);
    *into = parts[0] + "." + parts[1] + "." + parts[2];
    for (const std::string& part : kParts) {
        std::string text;
        if (!attribute(n, part, &text)) {
            add(kWarning, n, tagOf(n) + " has no " + part + ": the version reads '" + *into + "'");
        }
    }
}

void Check::technologies(xmlNodePtr n) {
    mHandled.insert(n);
    if (v32()) {
        add(kWarning, n, "<authorized_technologies> is not read in a 3.2 file: the type is 2");
        mExplained.insert(n);
        mVirtualBassType = 2;
        return;
    }
    if (mFormatNode == nullptr) mTechnologiesReadEarly = n;
    mWalker.moveTo(n);
    mWalker.childrenNext();
    xmlNodePtr at = mWalker.at();
    std::string text;
    if (at != nullptr && !isElement(at) && nextElement(at) != nullptr) {
        add(kError, at,
            "the " + kindOf(at) + " before " + tagOf(nextElement(at)) +
                    " hides it: the virtual bass process type is 0");
        mExplained.insert(nextElement(at));
    } else if (!attribute(at, "virtual_bass_process", &text)) {
        add(kWarning, isElement(at) ? at : n,
            tagOf(isElement(at) ? at : n) +
                    " has no virtual_bass_process: the virtual bass process type is 0");
    }
    mVirtualBassType = string2Int(read(at, {"virtual_bass_process"})[0]);
    if (!text.empty()) checkText(at, "virtual_bass_process", text, false);
}

void Check::preset(xmlNodePtr n) {
    std::vector<std::string> attrs = read(n, {"id", "type"});
    const std::string& id = attrs[0];
    const std::string& type = attrs[1];
    auto record = std::make_unique<Record>();
    record->node = n;
    if (type == "ieq") {
        bool known = false;
        PresetType kind = presetTypeOf(id, &known);
        if (!known) {
            add(kWarning, n,
                "preset id '" + id +
                        "' names no IEQ preset (off, detailed, balanced or warm): read as off");
        }
        auto [first, fresh] = mFirst.emplace("ieq " + std::to_string(static_cast<int>(kind)), n);
        if (!fresh) {
            add(kError, n,
                std::string("duplicate IEQ preset ") + presetTypeName(kind) + " (first at line " +
                        std::to_string(lineOf(first->second)) + "): either may win");
        }
        record->label = "IEQ preset " + id;
        record->table = TableType::IEQ_PRESETS;
        apply(n, setterTable().byName.at("ieq"), record.get());
    } else if (type == "geq") {
        int profileId = number(n, "id", "read as 0");
        auto [first, fresh] = mFirst.emplace("geq " + std::to_string(profileId), n);
        if (!fresh) {
            add(kError, n,
                "duplicate GEQ preset " + std::to_string(profileId) + " (first at line " +
                        std::to_string(lineOf(first->second)) + "): either may win");
        }
        record->label = "GEQ preset " + id;
        record->table = TableType::GEQ_PRESETS;
        apply(n, setterTable().byName.at("geq"), record.get());
    } else {
        add(kWarning, n,
            "preset type '" + type + "' is neither ieq nor geq: the preset is ignored");
        mExplained.insert(n);
    }
}

void Check::include(const xmlNode* at, xmlNodePtr owner, const std::string& label) {
    const std::string consequence = ": the IEQ preset of " + label + " is off";
    if (nameOf(at) == "include" && isElement(at)) {
        const std::string name = read(const_cast<xmlNodePtr>(at), {"preset"})[0];
        bool known = false;
        presetTypeOf(name, &known);
        if (!known) {
            add(kWarning, at,
                "<include> preset '" + name +
                        "' names no IEQ preset (off, detailed, balanced or warm)" + consequence);
        }
        return;
    }
    const xmlNode* hidden = nullptr;
    for (const xmlNode* c = owner->children; c != nullptr; c = c->next) {
        if (isElement(c) && nameOf(c) == "include" && mHandled.count(c) == 0) hidden = c;
    }
    if (hidden == nullptr) {
        add(kWarning, owner, label + " has no <include>" + consequence);
    } else if (at != nullptr && !isElement(at) && nextElement(at) == hidden) {
        add(kError, at, "the " + kindOf(at) + " before <include> hides it" + consequence);
    } else {
        add(kWarning, hidden,
            std::string("<include> is not where the service reads it (") +
                    (v32() ? "right after the profile's data" : "first in the endpoint") + ")" +
                    consequence);
    }
    if (hidden != nullptr) mExplained.insert(hidden);
}

void Check::profile(xmlNodePtr n) {
    mHandled.insert(n);
    std::vector<std::string> attrs = read(n, {"id", "name", "group"});
    const int id = number(n, "id", "read as 0");
    auto record = std::make_unique<Record>();
    record->label = "profile " + std::to_string(id);
    record->node = n;
    record->table = TableType::PROFILES;
    if (attrs[1].empty()) add(kWarning, n, record->label + " has no name: its name is empty");
    if (v32() && attrs[2] == "mobility") {
        add(kWarning, n, "group 'mobility' is not read in a 3.2 file: not a mobility profile");
    }
    auto [first, fresh] = mFirst.emplace("profile " + std::to_string(id), n);
    if (!fresh) {
        add(kError, n,
            "duplicate profile id " + std::to_string(id) + " (first at line " +
                    std::to_string(lineOf(first->second)) + "): either may win");
    }

    if (v32()) {
        // 3.2 profiles name their preset right after the data section.
        mWalker.moveTo(n);
        mWalker.childrenNext();
        mWalker.next();
        mWalker.next();
        include(mWalker.at(), n, record->label);
    }

    mWalker.moveTo(n);
    mWalker.childrenNext();
    xmlNodePtr data = mWalker.at();
    int ieqEnable = 0;
    int ieqAmount = 0;
    std::set<std::string> endpoints;
    if (data == n) {
        add(kError, n, record->label + " is empty: no settings and no endpoints");
        record->broken = true;
    } else if (data != nullptr && !isElement(data)) {
        const xmlNode* hidden = nextElement(data);
        add(kError, data,
            "the " + kindOf(data) + " before " + tagOf(hidden) + " hides it: " + record->label +
                    " gets no settings and no endpoints");
        if (hidden != nullptr) mExplained.insert(hidden);
        record->broken = true;
    }
    if (isElement(data)) {
        mHandled.insert(data);
        for (xmlNodePtr after = data->next; after != nullptr; after = after->next) {
            if (isElement(after)) {
                mUnreadReason[after] = "it follows the data section of " + record->label;
            }
        }
    }
    Record& profile = *record;
    mRecords.push_back(std::move(record));
    size_t outside = settings(data, profile, Section::PROFILE, [&](xmlNodePtr e) {
        const std::string name = nameOf(e);
        if (name == "endpoint_type") {
            endpoint(e, profile, ieqEnable, ieqAmount, &endpoints);
            return;
        }
        mHandled.insert(e);
        Record scratch;
        scratch.table = TableType::PROFILE_ENDPOINTS;
        apply(e, setterTable().byName.at(name), &scratch);
        const int value = scratch.firstValues().front();
        (name == "ieq-enable" ? ieqEnable : ieqAmount) = value;
        if (!v32()) {
            add(kWarning, e,
                tagOf(e) + " in a profile's data is not used in a " + formatVersion +
                        " file: set it in each endpoint");
        }
    });
    if (outside > 0 && isElement(data) && data != n) {
        add(kError, data,
            tagOf(data) + " of " + profile.label + " is empty: the " + plural(outside, "element") +
                    " after it are read as its settings");
    }
    if (v32()) {
        replaced(profile, Parameter::REVERB_SUPPRESSION_ENABLE, 0, "a 3.2 file");
        replaced(profile, Parameter::REVERB_SUPPRESSION_AMOUNT, 0, "a 3.2 file");
    }
    std::vector<std::string> missing;
    for (const char* name : kEndpointNames) {
        if (endpoints.count(name) == 0) missing.push_back(name);
    }
    if (!missing.empty()) {
        std::string names = missing[0];
        for (size_t i = 1; i < missing.size(); ++i) {
            names += (i + 1 == missing.size() ? " or " : ", ") + missing[i];
        }
        add(kError, n,
            profile.label + " has no " + names +
                    " endpoint: the service exits when it looks one up");
    }
}

void Check::endpoint(xmlNodePtr n, Record& profile, int ieqEnable, int ieqAmount,
                     std::set<std::string>* seen) {
    mHandled.insert(n);
    std::string id = read(n, {"id"})[0];
    if (id != "speaker" && id != "headphone" && id != "other") {
        add(kWarning, n,
            "endpoint id '" + id + "' is not speaker, headphone or other: read as other");
        id = "other";
    }
    auto record = std::make_unique<Record>();
    record->label = profile.label + ", endpoint " + id;
    record->node = n;
    record->table = TableType::PROFILE_ENDPOINTS;
    // Keyed by the profile's element: a duplicate profile is reported once, above.
    auto [first, fresh] =
            mFirst.emplace("endpoint " + std::to_string(lineOf(profile.node)) + " " + id, n);
    if (!fresh) {
        add(kError, n,
            "duplicate " + record->label + " (first at line " +
                    std::to_string(lineOf(first->second)) + "): either may win");
    }
    seen->insert(id);
    if (!v32()) {
        mWalker.moveTo(n);
        mWalker.childrenNext();
        if (mWalker.at() != n) include(mWalker.at(), n, record->label);
    }

    Record& endpoint = *record;
    mRecords.push_back(std::move(record));
    size_t outside = settings(n, endpoint, Section::ENDPOINT);
    if (n->children == nullptr) {
        add(kError, n,
            endpoint.label + " is empty: no settings" + (v32() ? "" : ", IEQ preset off") +
                    (outside > 0 ? ", and the " + plural(outside, "element") +
                                           " after it are read as its settings"
                                 : std::string()));
        endpoint.broken = true;
    }
    if (v32()) {
        replaced(endpoint, Parameter::IEQ_ENABLE, ieqEnable, "a 3.2 file, by the profile's value");
        replaced(endpoint, Parameter::IEQ_AMOUNT, ieqAmount, "a 3.2 file, by the profile's value");
    }
    if (v322()) {
        replaced(endpoint, Parameter::HEARING_PROTECTION_ENABLE, 0, "a 3.2.2 file");
        replaced(endpoint, Parameter::VIRTUALIZER_START_BAND, 0, "a 3.2.2 file");
    }
    if (v32()) {
        replaced(endpoint, Parameter::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, 4,
                 "a 3.2 file");
    }
    endpoint.set(Parameter::VIRTUAL_BASS_TYPE, {mVirtualBassType});
}

void Check::replaced(Record& record, Parameter p, int value, const std::string& why) {
    const xmlNode* from = record.from[toInt(p)];
    if (from != nullptr && record.holds(p) && record.values[toInt(p)] != std::vector<int>{value}) {
        add(kWarning, from,
            tagOf(from) + " is replaced by " + std::to_string(value) + " in " + why);
    }
    record.set(p, {value});
}

bool Check::tuning(xmlNodePtr n) {
    std::vector<std::string> attrs =
            read(n, {"name", "endpoint_type", "mono_device", "orientation", "output_channels"});
    const std::string& name = attrs[0];
    auto record = std::make_unique<Record>();
    record->label = "tuning '" + name + "'";
    record->node = n;
    record->table = TableType::TUNINGS;
    std::string text;
    if (!attribute(n, "name", &text)) add(kWarning, n, "<tuning> has no name: its name is empty");
    if (!attribute(n, "endpoint_type", &text)) {
        add(kWarning, n, "<tuning> has no endpoint_type: read as speaker");
    } else if (text != "speaker" && text != "headphone" && text != "other") {
        add(kWarning, n,
            "endpoint_type '" + text + "' is not speaker, headphone or other: read as speaker");
    }
    if (!attribute(n, "mono_device", &text)) {
        add(kWarning, n, "<tuning> has no mono_device: read as false");
    } else if (text != "true" && text != "false") {
        add(kWarning, n, "mono_device '" + text + "' is not true or false: read as false");
    }
    record->set(Parameter::ORIENTATION, {number(n, "orientation", "read as 0")});
    record->channels = number(n, "output_channels", "read as 0");
    record->set(Parameter::OUTPUT_CHANNELS, {record->channels});
    auto [first, fresh] = mFirst.emplace("tuning " + name, n);
    if (!fresh) {
        add(kError, n,
            "duplicate tuning name '" + name + "' (first at line " +
                    std::to_string(lineOf(first->second)) + "): either may win");
    }

    // Device ids first; the first other element is the data section.
    mWalker.moveTo(n);
    mWalker.childrenNext();
    xmlNodePtr data = nullptr;
    std::vector<size_t> devices;
    for (xmlNodePtr c = mWalker.at(); c != nullptr; c = c->next) {
        if (!isElement(c)) continue;
        if (nameOf(c) != "device_id") {
            data = c;
            break;
        }
        std::vector<std::string> ids = read(c, {"id", "endpoint_port"});
        if (!attribute(c, "id", &text)) add(kWarning, c, "<device_id> has no id: the id is empty");
        static const std::set<std::string> kPorts = {"internal_speaker", "hdmi",      "miracast",
                                                     "headphone",        "bluetooth", "usb"};
        if (kPorts.count(ids[1]) == 0) {
            add(kWarning, c,
                "endpoint_port '" + ids[1] +
                        "' is not internal_speaker, hdmi, miracast, headphone, bluetooth or "
                        "usb: the device is offered on no port");
        }
        auto [firstDevice, freshDevice] = mFirst.emplace("device " + ids[0], c);
        if (!freshDevice) {
            add(kError, c,
                "duplicate device id '" + ids[0] + "' (first at line " +
                        std::to_string(lineOf(firstDevice->second)) + "): either may win");
        }
        devices.push_back(mDevices.size());
        mDevices.push_back({ids[0], c, name, true});
    }
    mTunings.push_back({name, n, "", data != nullptr});
    if (data == nullptr) {
        add(kError, n,
            record->label + " has no data section: it is dropped, and nothing after it is read");
        for (size_t d : devices) {
            add(kError, mDevices[d].node,
                "device '" + mDevices[d].name + "' maps to " + record->label +
                        ", which is dropped: the device has no tuning");
            mDevices[d].kept = false;
        }
        return false;
    }
    mHandled.insert(data);
    for (xmlNodePtr after = data != n ? data->next : nullptr; after != nullptr;
         after = after->next) {
        if (isElement(after)) {
            mUnreadReason[after] = "it follows the data section of " + record->label;
        }
    }
    Record& tuning = *record;
    mRecords.push_back(std::move(record));
    size_t outside = settings(data, tuning, Section::TUNING);
    if (data == n) {
        add(kError, n,
            tuning.label + " is empty: it has no settings" +
                    (outside > 0 ? ", and the " + plural(outside, "element") +
                                           " after it are looked up as its settings"
                                 : std::string()));
        tuning.broken = true;
    } else if (data->children == nullptr && outside > 0) {
        add(kError, data,
            tagOf(data) + " of " + tuning.label + " is empty: the " + plural(outside, "element") +
                    " after it are read as its settings");
        tuning.broken = true;
    }
    if (v322()) replaced(tuning, Parameter::BASS_MBDRC_ENABLE, 0, "a 3.2.2 file");
    return true;
}

size_t Check::settings(xmlNodePtr container, Record& record, Section section,
                       const std::function<void(xmlNodePtr)>& other) {
    if (container == nullptr) return 0;
    mWalker.moveTo(container);
    const size_t stays = mWalker.stays.size();
    mWalker.childrenNext();
    // No child to step into: the walk runs on from the container itself.
    const bool spill = mWalker.stays.size() > stays;
    size_t outside = 0;
    for (xmlNodePtr e = mWalker.at(); e != nullptr; e = e->next) {
        if (!isElement(e)) continue;
        if (spill && e != container) ++outside;
        const std::string_view name = nameView(e);
        const Setter* setter = setterOf(e);
        const bool known = setter != nullptr;
        if (section == Section::PROFILE &&
            (name == "endpoint_type" || name == "ieq-enable" || name == "ieq-amount")) {
            other(e);
        } else if (known) {
            apply(e, *setter, &record, !spill);
        } else if (section == Section::ENDPOINT && name == "include") {
            if (v32() && !spill) {
                add(kWarning, e,
                    "<include> in an endpoint is not read in a 3.2 file: the profile's applies");
                mExplained.insert(e);
            }
        } else if (!spill) {
            std::vector<std::string> names = setterTable().names;
            if (section == Section::PROFILE) names.push_back("endpoint_type");
            add(kError, e,
                "unknown element " + tagOf(e) + ": skipped" +
                        Suggest::hint(std::string(name), names));
            mExplained.insert(e);
        }
    }
    return outside;
}

void Check::apply(xmlNodePtr n, const Setter& setter, Record* record, bool analyse) {
    Values values;
    const size_t reads = mWalker.reads.size();
    const size_t stays = mWalker.stays.size();
    mWalker.moveTo(n);
    setter.setter->set(values, mWalker);
    mHandled.insert(n);
    if (analyse) this->analyse(n, setter.kind, values, record, reads, stays);
    for (auto& [p, list] : values.values()) {
        record->set(p, std::move(list));
        record->from[toInt(p)] = n;
    }
}

const Setter* Check::setterOf(const xmlNode* e) {
    auto [cached, fresh] = mSetterOf.emplace(e->name, nullptr);
    if (fresh) {
        auto found = setterTable().byName.find(nameView(e));
        if (found != setterTable().byName.end()) cached->second = &found->second;
    }
    return cached->second;
}

void Check::checkRange(xmlNodePtr n, Parameter p, int value) {
    for (const SettingsTable::Row* settingRow : settingsOf(p)) {
        const SettingsTable::Row& row = *settingRow;
        if (value >= row.setting.min && value <= row.setting.max) continue;
        add(kWarning, n,
            tagOf(n) + " value " + std::to_string(value) + " is outside " +
                    std::to_string(row.setting.min) + ".." + std::to_string(row.setting.max) +
                    " of setting " + row.setting.name + ": the service uses it unchecked");
        return;
    }
}

void Check::checkRow(xmlNodePtr n, bool drc, const char* empty) {
    if (n->properties == nullptr) {
        if (!drc) add(kWarning, n, tagOf(n) + " has no value: " + empty);
        return;
    }
    const char* attr = nameOf(n->properties);
    std::string scratch;
    const std::string_view text = attributeText(n, attr, &scratch).value_or(std::string_view());
    ListRead list = readList(text);
    if (list.stop == text.size()) {
        if (list.values.empty() && !drc) {
            add(kWarning, n, tagOf(n) + " holds no number: " + empty);
        }
        return;
    }
    if (list.values.empty() && drc) list.values = {0};
    add(kWarning, n,
        tagOf(n) + " " + attr + " '" + std::string(text) + "' is not a list of numbers from '" +
                std::string(text.substr(list.stop)) + "' on: read as " + joined(list.values));
}

// A level the setter expected to step into had no child, or a comment stood in its
// place: the setter read what followed instead. True when that happened.
bool Check::misplaced(xmlNodePtr n, SetterKind kind, const std::vector<xmlNodePtr>& bands,
                      const Values& values, Record* record, size_t firstStay) {
    const bool matrix = kind == SetterKind::MIX_MATRIX;
    const xmlNode* culprit = nullptr;
    if (mWalker.stays.size() > firstStay) {
        culprit = mWalker.stays[firstStay];
    } else if (matrix && bands.empty() && n->children != nullptr && n->children->next != nullptr &&
               !isElement(n->children->next)) {
        culprit = n->children->next;  // the matrix looks no further than its first node
    }
    if (culprit == nullptr) return false;
    bool empty = true;
    for (const auto& entry : values.values()) empty = empty && entry.second.empty();
    const std::string stores = empty ? "stores nothing" : "stores values read from elsewhere";
    if (!isElement(culprit)) {
        const xmlNode* hidden = nextElement(culprit);
        add(kError, culprit,
            "the " + kindOf(culprit) + " before " + tagOf(hidden) + " hides it: " + tagOf(n) + " " +
                    stores);
        if (hidden != nullptr) mExplained.insert(hidden);
    } else {
        size_t after = 0;
        bool itself = false;
        for (xmlNodePtr band : bands) {
            itself = itself || band == culprit;
            after += isInside(band, culprit) ? 0 : 1;
        }
        const bool self = culprit == n;
        std::string read = itself ? (self ? "itself" : tagOf(culprit)) : "";
        if (itself && after > 0) read += " and ";
        if (after > 0) read += "the " + plural(after, "element") + " after it";
        add(kError, culprit,
            tagOf(culprit) + " has no child elements: " + (self ? "it" : tagOf(n)) +
                    (itself || after > 0
                             ? " reads " + read + " as its " + (matrix ? "rows" : "bands")
                             : " " + stores));
    }
    if (record != nullptr) record->broken = true;
    return true;
}

void Check::analyse(xmlNodePtr n, SetterKind kind, const Values& values, Record* record,
                    size_t firstRead, size_t firstStay) {
    // The elements the setter read, in order: the element itself, or its bands or rows.
    std::vector<xmlNodePtr>& bands = mBands;
    bands.clear();
    for (size_t i = firstRead; i < mWalker.reads.size(); ++i) {
        bands.push_back(mWalker.reads[i].node);
    }
    const xmlNode* ender = nullptr;
    if (kind == SetterKind::IEQ) {
        // The first element that is not a band_ieq ends the list.
        auto end = std::find_if(bands.begin(), bands.end(),
                                [](xmlNodePtr b) { return nameView(b) != "band_ieq"; });
        if (end != bands.end()) ender = *end;
        bands.erase(end, bands.end());
    }
    if (misplaced(n, kind, bands, values, record, firstStay)) return;
    if (ender != nullptr) {
        add(kWarning, ender,
            tagOf(ender) +
                    " is not a <band_ieq>: the IEQ bands end here, it and later "
                    "elements are not read");
        for (const xmlNode* e = ender; e != nullptr; e = e->next) mExplained.insert(e);
    }

    std::string scratch;
    if (kind == SetterKind::SIMPLE) {
        number(n, "value", "read as 0", true);
    } else if (kind == SetterKind::ROW || kind == SetterKind::DRC_ROW) {
        checkRow(n, kind == SetterKind::DRC_ROW);
    } else if (kind == SetterKind::SUBGAIN) {
        if (n->properties == nullptr) add(kWarning, n, tagOf(n) + " has no value: it stores none");
        for (xmlAttrPtr a = n->properties; a != nullptr; a = a->next) {
            checkText(n, nameOf(a),
                      attributeText(n, nameOf(a), &scratch).value_or(std::string_view()), false);
        }
    } else if (kind == SetterKind::VIRTUAL_BASS) {
        for (const std::string& name : VirtualBassValueSetter::kAttrNames) {
            number(n, name.c_str(), "read as 0");
        }
    } else if (kind == SetterKind::MIX_MATRIX) {
        for (xmlNodePtr row : bands) checkRow(row, false, "the row adds nothing");
        if (values.values().begin()->second.empty()) {
            add(kWarning, n, tagOf(n) + " holds no rows: the mix matrix is empty");
        }
    } else if (kind == SetterKind::IEQ) {
        checkBandLists(n, bands, IeqValueSetter::kAttrNames, Parameter::IEQ_TARGET);
    } else if (kind == SetterKind::GEQ) {
        checkBandLists(n, bands, GeqValueSetter::kAttrNames, Parameter::GEQ_GAIN);
    } else if (kind == SetterKind::AUDIO_OPTIMIZER) {
        // Frequency and the front gains read as 0 when missing; a missing surround
        // gain leaves its list short, which only a surround output notices.
        const auto& names = AudioOptimizerValueSetter::kAttrNames;
        for (xmlNodePtr band : bands) {
            for (size_t i = 0; i < names.size(); ++i) {
                std::optional<std::string_view> text =
                        attributeText(band, names[i].c_str(), &scratch);
                if (text && !text->empty()) {
                    checkText(band, names[i], *text, false);
                } else if (i < 3) {
                    add(kWarning, band, tagOf(band) + " has no " + names[i] + ": read as 0");
                } else if (record != nullptr && record->channels != kStereo) {
                    add(kWarning, band,
                        tagOf(band) + " has no " + names[i] +
                                ": that list is shorter than the bands");
                }
            }
        }
    } else if (kind == SetterKind::REGULATOR) {
        const auto& names = RegulatorTuningValueSetter::kAttrNames;
        for (xmlNodePtr band : bands) {
            for (size_t i = 0; i + 1 < names.size(); ++i) {
                number(band, names[i].c_str(), "read as 0");
            }
            std::optional<std::string_view> flag =
                    attributeText(band, names.back().c_str(), &scratch);
            if (!flag) {
                add(kWarning, band, tagOf(band) + " has no " + names.back() + ": read as false");
            } else if (*flag != "true" && *flag != "false") {
                add(kWarning, band,
                    tagOf(band) + " " + names.back() + " '" + std::string(*flag) +
                            "' is not true: read as false");
            }
        }
    }

    for (const auto& [p, list] : values.values()) {
        if (p == Parameter::GEQ_GAIN) continue;  // checked band by band
        for (int value : list) checkRange(n, p, value);
    }
    if (record == nullptr || record->table == TableType::IEQ_PRESETS ||
        record->table == TableType::GEQ_PRESETS) {
        return;
    }
    const DatabaseSchema::Table& table = DatabaseSchema::table(record->table);
    for (const auto& entry : values.values()) {
        if (table.parameterSlot[toInt(entry.first)] >= 0) continue;
        static const std::map<TableType, std::string> kHome = {
                {TableType::TUNINGS, "a tuning's data"},
                {TableType::PROFILES, "a profile's data"},
                {TableType::PROFILE_ENDPOINTS, "an endpoint"}};
        std::string home = "no record";
        for (const auto& [type, where] : kHome) {
            if (DatabaseSchema::table(type).parameterSlot[toInt(entry.first)] >= 0) home = where;
        }
        add(kWarning, n,
            tagOf(n) + " is not stored for " + record->label + ": it belongs in " + home);
        return;
    }
}

void Check::checkBandLists(xmlNodePtr n, const std::vector<xmlNodePtr>& bands,
                           const std::vector<std::string>& attrs, Parameter second) {
    if (bands.empty()) {
        add(kWarning, n, tagOf(n) + " holds no bands: it stores empty lists");
        return;
    }
    for (size_t a = 0; a < attrs.size(); ++a) {
        // The setter joins the fields with ',' and reads the whole text at once.
        std::string text;
        std::vector<size_t> starts;
        for (xmlNodePtr band : bands) {
            starts.push_back(text.size());
            std::string scratch;
            text.append(attributeText(band, attrs[a].c_str(), &scratch)
                                .value_or(std::string_view()))
                    .push_back(',');
        }
        ListRead list = readList(text);
        auto bandAt = [&](size_t offset) {
            return bands[std::upper_bound(starts.begin(), starts.end(), offset) - starts.begin() -
                         1];
        };
        if (list.stop < text.size()) {
            xmlNodePtr band = bandAt(list.stop);
            std::string field;
            const std::string why = attribute(band, attrs[a], &field)
                                            ? " '" + field + "' is not a number"
                                            : " is missing";
            add(kWarning, band,
                tagOf(band) + " " + attrs[a] + why + ": the " + attrs[a] + " list of " + tagOf(n) +
                        " ends here, with " + plural(list.values.size(), "value") + " for " +
                        plural(bands.size(), "band"));
        }
        if (a == 1 && second == Parameter::GEQ_GAIN) {
            for (size_t i = 0; i < list.values.size(); ++i) {
                checkRange(bandAt(list.offsets[i]), second, list.values[i]);
            }
        }
    }
}

void Check::unread(xmlNodePtr parent) {
    bool text = false;
    for (xmlNodePtr c = parent->children; c != nullptr && !text; c = c->next) {
        if ((c->type == XML_TEXT_NODE || c->type == XML_CDATA_SECTION_NODE) &&
            c->content != nullptr) {
            text = !isBlank(reinterpret_cast<const char*>(c->content));
        }
    }
    if (text) {
        add(kWarning, parent,
            "the text inside " + tagOf(parent) + " is not read: values go in attributes");
    }
    if (parent->parent != nullptr && parent->parent->type != XML_DOCUMENT_NODE &&
        mWalker.allAttrsRead.count(parent) == 0) {
        for (xmlAttrPtr a = parent->properties; a != nullptr; a = a->next) {
            if (a->ns != nullptr || mWalker.attrsRead.count(a) != 0) continue;
            const std::string name = nameOf(a);
            static const std::set<std::string> kNone;
            auto found = mWalker.asked.find(parent);
            const auto& asked = found != mWalker.asked.end() ? found->second : kNone;
            const bool firstOnly = std::any_of(
                    mWalker.reads.begin(), mWalker.reads.end(), [&](const Walker::Read& r) {
                        return r.node == parent && r.kind == Walker::ReadKind::FIRST;
                    });
            add(kWarning, parent,
                "attribute " + name + " of " + tagOf(parent) + " is not read" +
                        (firstOnly ? ": only the first attribute is"
                                   : Suggest::hint(name, {asked.begin(), asked.end()})));
        }
    }
    for (xmlNodePtr c = parent->children; c != nullptr; c = c->next) {
        if (!isElement(c) || mExplained.count(c) != 0) continue;
        if (mHandled.count(c) != 0 || mWalker.entered.count(c) != 0) {
            unread(c);
            continue;
        }
        // One finding for a run of unread siblings.
        size_t more = 0;
        for (xmlNodePtr d = c->next; d != nullptr; d = d->next) {
            if (!isElement(d)) continue;
            if (mHandled.count(d) != 0 || mExplained.count(d) != 0) break;
            ++more;
            mExplained.insert(d);
        }
        auto reason = mUnreadReason.find(c);
        add(kError, c,
            tagOf(c) +
                    (more > 0 ? " and the " + plural(more, "element") + " after it are"
                              : std::string(" is")) +
                    " not read" +
                    (reason != mUnreadReason.end() ? ": " + reason->second : " by the service"));
    }
}

void Check::lacking(const Record& record) {
    if (record.broken || record.table == TableType::IEQ_PRESETS ||
        record.table == TableType::GEQ_PRESETS) {
        return;
    }
    static const std::set<Parameter> kSurround = {
            Parameter::COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
            Parameter::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND,
            Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
            Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND};
    std::vector<std::string> missing;
    for (Parameter p : DatabaseSchema::table(record.table).parameterColumns) {
        if (record.holds(p)) continue;
        if (record.table == TableType::TUNINGS && record.channels == kStereo &&
            kSurround.count(p) != 0) {
            continue;  // a stereo output never sends its surround lists
        }
        missing.push_back(elementFor(p));
    }
    if (missing.empty()) return;
    std::string names = missing[0];
    if (missing.size() > 1) names += (missing.size() == 2 ? " and " : ", ") + missing[1];
    if (missing.size() > 2) names += " and " + std::to_string(missing.size() - 2) + " more";
    add(kWarning, record.node,
        record.label + " lacks " + names + ": stored as NULL, read back as unset");
}

std::vector<Finding> Check::validate(const std::string& schemaPath) const {
    std::vector<std::pair<int, std::string>> errors;
    xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(schemaPath.c_str());
    xmlSchemaSetParserStructuredErrors(parser, collectError, &errors);
    xmlSchemaPtr schema = xmlSchemaParse(parser);
    xmlSchemaFreeParserCtxt(parser);
    if (schema == nullptr) {
        return {{kError, schemaPath, 0, "the schema cannot be read: not validated"}};
    }
    errors.clear();
    xmlSchemaValidCtxtPtr validator = xmlSchemaNewValidCtxt(schema);
    xmlSchemaSetValidStructuredErrors(validator, collectError, &errors);
    xmlSchemaValidateDoc(validator, mDoc);
    xmlSchemaFreeValidCtxt(validator);
    xmlSchemaFree(schema);
    std::vector<Finding> found;
    for (const auto& [line, message] : errors) {
        found.push_back({kError, mFile, line, "schema: " + message});
    }
    return found;
}

Defaults Check::defaults() const {
    Defaults base;
    base.formatVersion = formatVersion;
    for (const Named& t : mTunings) {
        if (t.kept) base.tunings.insert(t.name);
    }
    // Devices of a dropped tuning still take their ids.
    for (const Named& d : mDevices) base.devices.insert(d.name);
    return base;
}

void Check::mergeInto(const Defaults& base) {
    if (formatVersion != base.formatVersion) {
        add(kError, mFormatNode,
            "format version " + formatVersion + " differs from the default file's " +
                    base.formatVersion + ": the merge refuses the whole file");
        return;
    }
    std::set<std::string> dropped;
    for (const Named& t : mTunings) {
        if (!t.kept || base.tunings.count(t.name) == 0) continue;
        add(kWarning, t.node,
            "tuning '" + t.name + "' is in the default file too: the merge drops it");
        dropped.insert(t.name);
    }
    for (const Named& d : mDevices) {
        if (!d.kept) continue;  // reported with its tuning
        if (dropped.count(d.tuning) != 0) {
            add(kWarning, d.node,
                "device '" + d.name + "' maps to the dropped tuning '" + d.tuning +
                        "': the merge drops it");
        } else if (base.devices.count(d.name) != 0) {
            add(kWarning, d.node,
                "device id '" + d.name + "' is in the default file too: the merge drops it");
        }
    }
}

}  // namespace

TuningChecker::TuningChecker(std::string schemaPath) : mSchemaPath(std::move(schemaPath)) {}

std::vector<Finding> TuningChecker::check(const std::string& file, const std::string& defaultFile) {
    QuietLog quiet;
    setterTable();  // built before any document is open: building it resets libxml2
    std::vector<Finding> findings;
    bool merge = false;
    Defaults base;
    if (!defaultFile.empty()) {
        Check defaults(defaultFile, false);
        merge = defaults.load();
        if (merge) {
            defaults.walk();
            base = defaults.defaults();
        } else {
            findings = defaults.findings;
            findings.push_back({kError, defaultFile, 0,
                                "the default file cannot be read: the merge is not checked"});
        }
    }
    {
        Check check(file, !defaultFile.empty());
        if (check.load()) {
            // The schema and the walk each take about as long: on two cores, side by side.
            std::vector<Finding> schemaFindings;
            auto validate = [&] { schemaFindings = check.validate(mSchemaPath); };
            std::thread validator;
            try {
                validator = std::thread(validate);
            } catch (const std::system_error&) {
                validate();  // no thread to be had: one after the other
            }
            check.walk();
            if (validator.joinable()) validator.join();
            check.findings.insert(check.findings.end(), schemaFindings.begin(),
                                  schemaFindings.end());
            if (merge) check.mergeInto(base);
        }
        findings.insert(findings.end(), check.findings.begin(), check.findings.end());
    }
    std::stable_sort(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
        return std::make_pair(a.file != file, a.line) < std::make_pair(b.file != file, b.line);
    });
    findings.erase(std::unique(findings.begin(), findings.end(),
                               [](const Finding& a, const Finding& b) {
                                   return a.file == b.file && a.line == b.line &&
                                          a.message == b.message;
                               }),
                   findings.end());
    return findings;
}

}  // namespace vessa
