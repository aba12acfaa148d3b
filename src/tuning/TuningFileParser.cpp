#define LOG_TAG "TuningFileParser"

#include "tuning/TuningFileParser.h"

#include <log/log.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "tuning/NodeParseUtils.h"

namespace vessa {

namespace {

// Version prefixes of the two older formats that need fixed values.
const std::string kFormat32Prefix = "3.2.";
const std::string kFormat322Prefix = "3.2.2";

// The number printed with an unknown IEQ preset name.
constexpr int kInvalidPresetNameCode = 286;

// Virtual bass process type of 3.2 files, which do not write one.
constexpr int kFormat32VirtualBassType = 2;
// Steerer source distance forced on 3.2 endpoints.
constexpr int kFormat32SourceDistance = 4;

const std::vector<std::string> kVersionAttrs = {"major", "minor", "maintenance"};
const std::vector<std::string> kTechnologyAttrs = {"virtual_bass_process"};
const std::vector<std::string> kPresetAttrs = {"id", "type"};
const std::vector<std::string> kProfileAttrs = {"id", "name", "group"};
const std::vector<std::string> kEndpointAttrs = {"id"};
const std::vector<std::string> kIncludeAttrs = {"preset"};
const std::vector<std::string> kTuningAttrs = {"name", "endpoint_type", "mono_device",
                                               "orientation", "output_channels"};
const std::vector<std::string> kDeviceIdAttrs = {"id", "endpoint_port"};

// One entry per name, empty where the current node lacks the attribute.
std::vector<std::string> readAttributes(const TagIterator& it,
                                        const std::vector<std::string>& names) {
    std::vector<std::string> values;
    it.parseNodeWithName(names, values);
    values.resize(names.size());
    return values;
}

// Calls fn(name) for the current node and every following sibling that is an element.
template <typename Fn>
void forEachElementFromHere(TagIterator& it, Fn fn) {
    while (it.isCurValid()) {
        if (it.isElementNode()) fn(it.getNodeName());
        it.next();
    }
}

// Calls fn(name) for the child elements of the current node from where childrenNext
// lands (every one of them in indented XML); the iterator is left where it was.
template <typename Fn>
void forEachChildElement(TagIterator& it, Fn fn) {
    it.pushNode();
    it.childrenNext();
    forEachElementFromHere(it, fn);
    it.popNode();
}

bool hasPrefix(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

std::string joinVersion(const std::vector<std::string>& parts) {
    return parts[0] + "." + parts[1] + "." + parts[2];
}

template <typename T>
void deleteAll(std::set<T*>& records) {
    for (T* record : records) delete record;
    records.clear();
}

}  // namespace

TuningFileParser::TuningFileParser() : mParsed(false), mNumOfProfiles(0), mVirtualBassType(1) {}

TuningFileParser::TuningFileParser(const std::string& path) : TuningFileParser() {
    setTuningFile(path);
}

TuningFileParser::~TuningFileParser() {
    deleteAll(mIeqPresets);
    deleteAll(mGeqPresets);
    deleteAll(mProfiles);
    deleteAll(mProfileEndpoints);
    deleteAll(mTunings);
    deleteAll(mDeviceTunings);
}

int TuningFileParser::setTuningFile(const std::string& path) {
    if (mTagIterator.init(path) != 0) return -EINVAL;
    parseTuningFile();
    // The records hold everything that is needed; the document can go now.
    mTagIterator.clearAll();

    mDeviceData = std::make_unique<DeviceData>();
    mDeviceData->setFormatVersion(mFormatVersion);
    mDeviceData->setToolVersion(mToolVersion);
    mDeviceData->setIeqPresets(mIeqPresets);
    mDeviceData->setGeqPresets(mGeqPresets);
    mDeviceData->setProfiles(mProfiles);
    mDeviceData->setProfileEndPoints(mProfileEndpoints);
    mDeviceData->setTunings(mTunings);
    mDeviceData->setDeviceTunings(mDeviceTunings);
    return 0;
}

void TuningFileParser::parseTuningFile() {
    // Versions first, so that they apply to every record wherever they stand.
    mTagIterator.pushNode();
    parseVersions();
    mTagIterator.popNode();
    parseRecords();
    mParsed = true;
}

std::string TuningFileParser::getProfileName(int id) {
    return mProfileNames[id];
}

bool TuningFileParser::findIeqPresetType(const std::string& name, PresetType* type) {
    if (name.size() < 3) return false;
    for (PresetType t :
         {PresetType::OFF, PresetType::BALANCED, PresetType::WARM, PresetType::DETAILED}) {
        if (name.find(presetTypeName(t)) != std::string::npos) {
            *type = t;
            return true;
        }
    }
    return false;
}

PresetType TuningFileParser::getIeqPresetTypeByName(const std::string& name) {
    PresetType type = PresetType::OFF;
    if (!findIeqPresetType(name, &type)) ALOGE("name is invalid, %d", kInvalidPresetNameCode);
    return type;
}

bool TuningFileParser::isFormat32() const {
    return hasPrefix(mFormatVersion, kFormat32Prefix);
}

bool TuningFileParser::isFormat322() const {
    return hasPrefix(mFormatVersion, kFormat322Prefix);
}

void TuningFileParser::parseVersions() {
    forEachElementFromHere(mTagIterator, [this](const std::string& name) {
        if (name == "format_version") {
            mFormatVersion = joinVersion(readAttributes(mTagIterator, kVersionAttrs));
            ALOGD("xml version: %s", mFormatVersion.c_str());
        } else if (name == "tool_version") {
            mToolVersion = joinVersion(readAttributes(mTagIterator, kVersionAttrs));
        } else if (name == "authorized_technologies") {
            parseAuthorizedTechnologies();
        }
    });
}

void TuningFileParser::parseRecords() {
    // A tuning without data leaves no current node, which ends this walk.
    forEachElementFromHere(mTagIterator, [this](const std::string& name) {
        if (name == "preset") {
            parsePreset();
        } else if (name == "profile") {
            parseProfile();
        } else if (name == "tuning") {
            parseTuning();
        }
    });
}

void TuningFileParser::parseAuthorizedTechnologies() {
    if (isFormat32()) {
        mVirtualBassType = kFormat32VirtualBassType;
        return;
    }
    mTagIterator.pushNode();
    mTagIterator.childrenNext();
    mVirtualBassType = string2Int(readAttributes(mTagIterator, kTechnologyAttrs)[0]);
    ALOGD("%s, mVirtualBassType = %d", "parseAuthorizedTechnologies", mVirtualBassType);
    mTagIterator.popNode();
}

void TuningFileParser::parsePreset() {
    std::vector<std::string> attrs = readAttributes(mTagIterator, kPresetAttrs);
    const std::string& id = attrs[0];
    const std::string& type = attrs[1];
    if (type == "ieq") {
        auto* preset = new IeqPreset(getIeqPresetTypeByName(id));
        applySetter("ieq", *preset);
        mIeqPresets.insert(preset);
    } else if (type == "geq") {
        // string2Int reads every in-range id as atoi would, and stays defined
        // for the ones out of range.
        auto* preset = new GeqPreset(string2Int(id));
        applySetter("geq", *preset);
        mGeqPresets.insert(preset);
    }
}

void TuningFileParser::parseProfile() {
    ++mNumOfProfiles;
    PresetType presetType = PresetType::OFF;
    if (isFormat32()) {
        // 3.2 profiles name one preset for all endpoints, after their data section.
        ALOGD("%s, parse the ieq preset", "parseProfile");
        mTagIterator.pushNode();
        mTagIterator.childrenNext();
        mTagIterator.next();
        mTagIterator.next();
        presetType = parseIncludedPreset();
        mTagIterator.popNode();
    }

    std::vector<std::string> attrs = readAttributes(mTagIterator, kProfileAttrs);
    int profileId = string2Int(attrs[0]);
    const std::string& name = attrs[1];
    bool mobility = !isFormat32() && attrs[2] == "mobility";
    mProfileNames[profileId] = name;
    auto* profile = new Profile(profileId, name, mobility);

    // The IEQ switches come before the endpoints, which receive them.
    int ieqEnable = 0;
    int ieqAmount = 0;
    mTagIterator.pushNode();
    mTagIterator.childrenNext();
    forEachChildElement(mTagIterator, [&](const std::string& element) {
        if (element == "ieq-enable") {
            ieqEnable = NodeParseUtils::parseValue(mTagIterator);
        } else if (element == "ieq-amount") {
            ieqAmount = NodeParseUtils::parseValue(mTagIterator);
        } else if (element == "endpoint_type") {
            parseProfileEndpoint(profileId, ieqEnable, ieqAmount, presetType);
        } else if (ValueSetter* setter = sSetterCollection.getValueSetter(element)) {
            setter->set(*profile, mTagIterator);
        }
    });
    mTagIterator.popNode();

    if (isFormat32()) {
        profile->set(Parameter::REVERB_SUPPRESSION_ENABLE, {0});
        profile->set(Parameter::REVERB_SUPPRESSION_AMOUNT, {0});
    }
    mProfiles.insert(profile);
}

void TuningFileParser::parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount,
                                            PresetType presetType) {
    const std::string name = readAttributes(mTagIterator, kEndpointAttrs)[0];
    Endpoint endpoint = name == "speaker"     ? Endpoint::SPEAKER
                        : name == "headphone" ? Endpoint::HEADPHONE
                                              : Endpoint::OTHER;
    if (!isFormat32()) {
        ALOGD("%s:%s, parse the include ieq preset", "parseProfileEndpoint", name.c_str());
        mTagIterator.pushNode();
        mTagIterator.childrenNext();
        presetType = parseIncludedPreset();
        mTagIterator.popNode();
    }

    auto* profileEndpoint = new ProfileEndpoint(profileId, endpoint, presetType);
    applySetters(*profileEndpoint);
    if (isFormat32()) {
        profileEndpoint->set(Parameter::IEQ_ENABLE, {ieqEnable});
        profileEndpoint->set(Parameter::IEQ_AMOUNT, {ieqAmount});
    }
    if (isFormat322()) {
        profileEndpoint->set(Parameter::HEARING_PROTECTION_ENABLE, {0});
        profileEndpoint->set(Parameter::VIRTUALIZER_START_BAND, {0});
    }
    if (isFormat32()) {
        profileEndpoint->set(Parameter::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE,
                             {kFormat32SourceDistance});
    }
    profileEndpoint->set(Parameter::VIRTUAL_BASS_TYPE, {mVirtualBassType});
    mProfileEndpoints.insert(profileEndpoint);
}

void TuningFileParser::parseTuning() {
    std::vector<std::string> attrs = readAttributes(mTagIterator, kTuningAttrs);
    const std::string& name = attrs[0];
    // Unlike a profile endpoint, an unknown tuning endpoint counts as the speaker.
    Endpoint endpoint = attrs[1] == "headphone" ? Endpoint::HEADPHONE
                        : attrs[1] == "other"   ? Endpoint::OTHER
                                                : Endpoint::SPEAKER;
    auto tuning = std::make_unique<Tuning>(name, endpoint, attrs[2] == "true");
    tuning->set(Parameter::ORIENTATION, {string2Int(attrs[3])});
    tuning->set(Parameter::OUTPUT_CHANNELS, {string2Int(attrs[4])});

    // device_id elements first; the first other element is the data section.
    mTagIterator.pushNode();
    mTagIterator.childrenNext();
    bool hasData = false;
    while (mTagIterator.isCurValid()) {
        if (mTagIterator.isElementNode()) {
            if (mTagIterator.getNodeName() != "device_id") {
                hasData = true;
                break;
            }
            parseDeviceTuning(name);
        }
        mTagIterator.next();
    }
    if (!hasData) {
        // The saved position stays on the stack: with no current node the
        // caller's walk ends here, and later records are not read.
        ALOGE("There is no <data> in Tuning section");
        return;
    }
    applySetters(*tuning);
    if (isFormat322()) tuning->set(Parameter::BASS_MBDRC_ENABLE, {0});
    mTagIterator.popNode();
    mTunings.insert(tuning.release());
}

void TuningFileParser::parseDeviceTuning(const std::string& tuningName) {
    std::vector<std::string> attrs = readAttributes(mTagIterator, kDeviceIdAttrs);
    mDeviceTunings.insert(new DeviceTuning(attrs[0], attrs[1], tuningName));
}

PresetType TuningFileParser::parseIncludedPreset() {
    std::string name;
    if (mTagIterator.getNodeName() == "include") {
        name = readAttributes(mTagIterator, kIncludeAttrs)[0];
    }
    return getIeqPresetTypeByName(name);
}

void TuningFileParser::applySetters(ParameterValues& record) {
    forEachChildElement(mTagIterator, [this, &record](const std::string& element) {
        if (ValueSetter* setter = sSetterCollection.getValueSetter(element)) {
            setter->set(record, mTagIterator);
        }
    });
}

void TuningFileParser::applySetter(const char* setterName, ParameterValues& record) {
    if (ValueSetter* setter = sSetterCollection.getValueSetter(setterName)) {
        setter->set(record, mTagIterator);
    }
}

}  // namespace vessa
