#pragma once

#include <bitset>
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

    // As the setters above, for a record of which only `changed` changed. When the
    // views took this very record whole before and have missed none of its changes
    // since, every other value is still the record's, so only `changed` is merged,
    // with what the whole merge would report. Otherwise the record is merged whole.
    void updateProfile(Profile& profile, Parameter changed);
    void updateGeqPreset(GeqPreset& preset, Parameter changed);
    void updateProfileEndpoint(Port port, ProfileEndpoint& endpoint, Parameter changed);

  private:
    struct DeviceView {
        std::unique_ptr<DeviceParameters> parameters;
        ParameterTranslator* translator;
    };

    DeviceView* viewFor(Port port);

    std::unique_ptr<ProfileParameters> mProfileParameters;
    ParameterTranslator* mProfileTranslator;
    std::map<AndroidDevice, DeviceView> mDeviceViews;
    // Ports whose view holds its profile endpoint record's values and hears of each
    // change to it: set by a whole merge, cleared when the port moves to a tuning of
    // another endpoint, whose record's changes the port then no longer hears of.
    std::bitset<kNumPortNames> mEndpointInStep;
};

}  // namespace vessa
