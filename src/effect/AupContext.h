#pragma once

#include <map>
#include <memory>

#include "effect/ParameterTranslator.h"
#include "model/DeviceParameters.h"
#include "model/ProfileParameters.h"
#include "model/Vocabulary.h"

namespace vessa {

// The parameter views the effect is driven from: one profile-wide view and one
// view per output device, each reporting to the translator of its device.
class AupContext {
  public:
    static const std::map<Port, AndroidDevice> kDeviceForPort;
    static const std::map<AndroidDevice, Port> kPortForDevice;

    explicit AupContext(std::map<AndroidDevice, ParameterTranslator*>& translators);
    ~AupContext();
    AupContext(const AupContext&) = delete;
    AupContext& operator=(const AupContext&) = delete;

    // The profile view for the default device, else the device's view (or null).
    ParameterValues* getParameters(AndroidDevice device) const;
    // Null for a port without a device.
    DeviceParameters* getDeviceParameters(Port port) const;

    // Applied to the profile view, then to every device view in device order.
    void setProfile(Profile& profile);
    void setGeqPreset(GeqPreset& preset);
    // Applied to the port's device view; nothing happens for a port without one.
    void setProfileEndpoint(Port port, ProfileEndpoint& endpoint);
    void setIeqPreset(Port port, IeqPreset& preset);
    void setTuning(Port port, Tuning& tuning);

  private:
    std::unique_ptr<ProfileParameters> mProfileParameters;
    std::map<AndroidDevice, std::unique_ptr<DeviceParameters>> mDeviceParameters;
};

}  // namespace vessa
