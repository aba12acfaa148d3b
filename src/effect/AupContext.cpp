#include "effect/AupContext.h"

#include <bitset>

#include "effect/OutputModeTranslator.h"

namespace vessa {

namespace {

using ParamBits = std::bitset<kNumParameters>;

ParamBits bitsOf(const ParamSet& params) {
    ParamBits bits;
    for (Parameter p : params) bits.set(static_cast<size_t>(toInt(p)));
    return bits;
}

bool has(const ParamBits& bits, Parameter p) {
    const int index = toInt(p);
    return index >= 0 && index < kNumParameters && bits.test(static_cast<size_t>(index));
}

// Which Parameters a view or a record may hold, as bitsets: a look-up per change
// costs a bit test, not a tree walk. Built on first use, after the sets.
struct ValidBits {
    ParamBits profileView = bitsOf(ProfileParameters::kValidParams);
    ParamBits deviceView = bitsOf(DeviceParameters::kValidParams);
    ParamBits profile = bitsOf(Profile::kValidParams);
    ParamBits geqPreset = bitsOf(GeqPreset::kValidParams);
    ParamBits profileEndpoint = bitsOf(ProfileEndpoint::kValidParams);
};

const ValidBits& validBits() {
    static const ValidBits sBits;
    return sBits;
}

// One entry of the views' merge: a Parameter the source holds and the view may
// hold is taken when its values differ, and the change is reported. As in the
// whole merge, a valid Parameter the view lacks gets an empty list first.
void mergeOne(ParameterValues& view, const ParamBits& valid, ParameterValues& source, Parameter p,
              ParamChangeObserver* observer) {
    auto held = source.values().find(p);
    if (held == source.values().end() || !has(valid, p)) return;
    if (view.valuesOf(p) == held->second) return;
    view.set(p, held->second);
    if (observer != nullptr) observer->onParameterChanged(p);
}

}  // namespace

const std::map<Port, AndroidDevice> AupContext::kDeviceForPort = {
        {Port::INTERNAL_SPEAKER, kDeviceOutSpeaker}, {Port::HDMI, kDeviceOutAuxDigital},
        {Port::MIRACAST, kDeviceOutRemoteSubmix},    {Port::HEADPHONE, kDeviceOutWiredHeadphone},
        {Port::BLUETOOTH, kDeviceOutBluetoothA2dp},  {Port::USB, kDeviceOutUsbDevice},
};

const std::map<AndroidDevice, Port> AupContext::kPortForDevice = {
        {kDeviceOutSpeaker, Port::INTERNAL_SPEAKER}, {kDeviceOutAuxDigital, Port::HDMI},
        {kDeviceOutRemoteSubmix, Port::MIRACAST},    {kDeviceOutWiredHeadphone, Port::HEADPHONE},
        {kDeviceOutBluetoothA2dp, Port::BLUETOOTH},  {kDeviceOutUsbDevice, Port::USB},
};

AupContext::AupContext(std::map<AndroidDevice, ParameterTranslator*>& translators)
    : mProfileParameters(std::make_unique<ProfileParameters>(translators[kDeviceOutDefault])),
      mProfileTranslator(translators[kDeviceOutDefault]) {
    for (const auto& [port, device] : kDeviceForPort) {
        if (mDeviceViews.count(device) == 0) {
            ParameterTranslator* translator = translators[device];
            mDeviceViews.emplace(
                    device, DeviceView{std::make_unique<DeviceParameters>(translator), translator});
        }
    }
}

AupContext::~AupContext() = default;

ParameterValues* AupContext::getParameters(AndroidDevice device) const {
    if (device == kDeviceOutDefault) return mProfileParameters.get();
    auto it = mDeviceViews.find(device);
    return it == mDeviceViews.end() ? nullptr : it->second.parameters.get();
}

AupContext::DeviceView* AupContext::viewFor(Port port) {
    auto device = kDeviceForPort.find(port);
    if (device == kDeviceForPort.end()) return nullptr;
    auto it = mDeviceViews.find(device->second);
    return it == mDeviceViews.end() ? nullptr : &it->second;
}

DeviceParameters* AupContext::getDeviceParameters(Port port) const {
    DeviceView* view = const_cast<AupContext*>(this)->viewFor(port);
    return view == nullptr ? nullptr : view->parameters.get();
}

void AupContext::setProfile(Profile& profile) {
    mProfileParameters->setProfile(profile);
    for (auto& [device, view] : mDeviceViews) view.parameters->setProfile(profile);
}

void AupContext::setGeqPreset(GeqPreset& preset) {
    mProfileParameters->setGeqPreset(preset);
}

void AupContext::setProfileEndpoint(Port port, ProfileEndpoint& endpoint) {
    DeviceView* view = viewFor(port);
    if (view == nullptr) return;
    view->parameters->setProfileEndpoint(endpoint);
    mEndpointInStep.set(static_cast<size_t>(port));
}

void AupContext::setIeqPreset(Port port, IeqPreset& preset) {
    if (DeviceParameters* view = getDeviceParameters(port)) view->setIeqPreset(preset);
}

void AupContext::setTuning(Port port, Tuning& tuning) {
    DeviceView* view = viewFor(port);
    if (view == nullptr) return;
    const ProfileEndpoint* endpoint = view->parameters->getProfileEndpoint();
    if (endpoint == nullptr || endpoint->getEndpoint() != tuning.getEndpoint()) {
        mEndpointInStep.reset(static_cast<size_t>(port));
    }
    view->parameters->setTuning(tuning);
}

void AupContext::updateProfile(Profile& profile, Parameter changed) {
    const ValidBits& valid = validBits();
    if (mProfileParameters->getProfile() != &profile || !has(valid.profile, changed)) {
        setProfile(profile);
        return;
    }
    mergeOne(*mProfileParameters, valid.profileView, profile, changed, mProfileTranslator);
    for (auto& [device, view] : mDeviceViews) {
        mergeOne(*view.parameters, valid.deviceView, profile, changed, view.translator);
    }
}

void AupContext::updateGeqPreset(GeqPreset& preset, Parameter changed) {
    const ValidBits& valid = validBits();
    if (mProfileParameters->getGeqPreset() != &preset || !has(valid.geqPreset, changed)) {
        setGeqPreset(preset);
        return;
    }
    mergeOne(*mProfileParameters, valid.profileView, preset, changed, mProfileTranslator);
}

void AupContext::updateProfileEndpoint(Port port, ProfileEndpoint& endpoint, Parameter changed) {
    const ValidBits& valid = validBits();
    DeviceView* view = viewFor(port);
    if (view == nullptr) return;
    if (view->parameters->getProfileEndpoint() != &endpoint ||
        !mEndpointInStep.test(static_cast<size_t>(port)) || !has(valid.profileEndpoint, changed)) {
        setProfileEndpoint(port, endpoint);
        return;
    }
    mergeOne(*view->parameters, valid.deviceView, endpoint, changed, view->translator);
    // A translator may have written into the view since (a mono speaker's virtualizer
    // switch); the whole merge would take the record's value back, and so does this.
    for (Parameter p : OutputModeTranslator::kWrittenToSource) {
        if (p != changed)
            mergeOne(*view->parameters, valid.deviceView, endpoint, p, view->translator);
    }
}

}  // namespace vessa
