#pragma once

#include <set>
#include <string>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace vessa {

// What one tuning file holds: its versions, its signature (stamped by the
// loader) and the records parsed from it. Owns none of the records: they belong
// to the TuningFileParser that created them and live exactly as long as it.
class DeviceData {
  public:
    DeviceData() = default;
    virtual ~DeviceData();

    virtual std::string getFormatVersion() const;
    virtual std::string getToolVersion() const;
    virtual std::set<IeqPreset*>& getIeqPresets();
    virtual std::set<GeqPreset*>& getGeqPresets();
    virtual std::set<Profile*>& getProfiles();
    virtual std::set<ProfileEndpoint*>& getProfileEndpoints();
    virtual std::set<Tuning*>& getTunings();
    virtual std::set<DeviceTuning*>& getDeviceTunings();
    virtual void setFormatVersion(const std::string& version);
    virtual void setToolVersion(const std::string& version);
    virtual void setIeqPresets(const std::set<IeqPreset*>& presets);
    virtual void setGeqPresets(const std::set<GeqPreset*>& presets);
    virtual void setProfiles(const std::set<Profile*>& profiles);
    virtual void setProfileEndPoints(const std::set<ProfileEndpoint*>& endpoints);
    virtual void setTunings(const std::set<Tuning*>& tunings);
    virtual void setDeviceTunings(const std::set<DeviceTuning*>& deviceTunings);
    virtual std::string getSignature() const;
    virtual void setSignature(const std::string& signature);
    // Forces the "off" preset on every endpoint whose IEQ is disabled. An
    // endpoint without an ieq-enable value counts as enabled.
    virtual void validateData();

  private:
    std::string mFormatVersion;
    std::string mToolVersion;
    std::string mSignature;
    std::set<IeqPreset*> mIeqPresets;
    std::set<GeqPreset*> mGeqPresets;
    std::set<Profile*> mProfiles;
    std::set<ProfileEndpoint*> mProfileEndpoints;
    std::set<Tuning*> mTunings;
    std::set<DeviceTuning*> mDeviceTunings;
};

}  // namespace vessa
