#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "model/Vocabulary.h"
#include "tuning/DeviceData.h"
#include "tuning/SetterCollection.h"
#include "tuning/TagIterator.h"

namespace vessa {

// Reads one tuning XML file into records. The parser owns every record it
// created, and its current DeviceData, until it is destroyed; parsing a second
// file on the same parser adds to the records of the first.
class TuningFileParser {
  public:
    // The setters of every parse. Not safe for concurrent parses: callers
    // serialise parsing.
    static SetterCollection sSetterCollection;

    TuningFileParser();
    explicit TuningFileParser(const std::string& path);
    virtual ~TuningFileParser();
    TuningFileParser(const TuningFileParser&) = delete;
    TuningFileParser& operator=(const TuningFileParser&) = delete;

    // Parses the file and makes a new DeviceData of everything parsed so far.
    // 0, or -22 when the file cannot be read (the DeviceData is then unchanged).
    int setTuningFile(const std::string& path);
    void parseTuningFile();
    bool isParsed() const { return mParsed; }
    // Owned by the parser; null before the first successful setTuningFile.
    DeviceData* getDeviceData() const { return mDeviceData.get(); }
    int getNumOfProfiles() const { return mNumOfProfiles; }
    // Empty for an unknown id (which is then remembered with the empty name).
    std::string getProfileName(int id);

    // The IEQ preset a preset name stands for, by substring; OFF (with an error
    // line) for a name that names none.
    static PresetType getIeqPresetTypeByName(const std::string& name);
    // The same rule, silently: false when `name` names no preset (`type` untouched).
    static bool findIeqPresetType(const std::string& name, PresetType* type);

  private:
    bool isFormat32() const;
    bool isFormat322() const;

    void parseVersions();
    void parseRecords();
    // Each of these is called with the iterator on its element and leaves it there.
    void parseAuthorizedTechnologies();
    void parsePreset();
    void parseProfile();
    void parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount, PresetType presetType);
    // A tuning without a data section is dropped and leaves the iterator on no node.
    void parseTuning();
    void parseDeviceTuning(const std::string& tuningName);
    // The preset named by the "preset" attribute of an "include" element at the
    // current node; the empty name (an error, OFF) when the node is something else.
    PresetType parseIncludedPreset();
    // Applies the setters of the current element's child elements to `record`.
    void applySetters(ParameterValues& record);
    // Sets a parameter with the setter registered for `setterName` (the preset readers).
    void applySetter(const char* setterName, ParameterValues& record);

    bool mParsed;
    int mNumOfProfiles;
    std::unique_ptr<DeviceData> mDeviceData;
    int mVirtualBassType;
    std::string mFormatVersion;
    std::string mToolVersion;
    std::map<int, std::string> mProfileNames;
    std::set<IeqPreset*> mIeqPresets;
    std::set<GeqPreset*> mGeqPresets;
    std::set<Profile*> mProfiles;
    std::set<ProfileEndpoint*> mProfileEndpoints;
    std::set<Tuning*> mTunings;
    std::set<DeviceTuning*> mDeviceTunings;
    TagIterator mTagIterator;
};

}  // namespace vessa
