#define LOG_TAG "AupController"

#include "effect/AupController.h"

#include <log/log.h>

namespace vessa {

const std::set<AndroidDevice> AupController::kControlledDevices = {
        kDeviceOutSpeaker,    kDeviceOutWiredHeadphone, kDeviceOutBluetoothA2dp,
        kDeviceOutAuxDigital, kDeviceOutUsbDevice,      kDeviceOutRemoteSubmix,
        kDeviceOutDefault};

AupController::ParameterChange::ParameterChange(AupController* controller, Parameter changed)
    : mController(controller) {
    if (mController == nullptr) return;
    mPrevious = mController->mChanged;
    mController->mChanged = changed;
}

AupController::ParameterChange::~ParameterChange() {
    if (mController != nullptr) mController->mChanged = mPrevious;
}

AupController::AupController(int value, AupEffect& effect) : mEffect(&effect), mValue(value) {
    for (AndroidDevice device : kControlledDevices) {
        mTranslators.emplace(device, new ParameterTranslator());
    }
    mContext = std::make_unique<AupContext>(mTranslators);
}

AupController::~AupController() {
    mContext.reset();  // its views point into the translators
    for (auto& [device, translator] : mTranslators) delete translator;
}

void AupController::sendParameters(AndroidDevice target) {
    SetParamCommand command(static_cast<int>(target), mBatch);
    for (auto& [device, translator] : mTranslators) {
        command.setDeviceId(static_cast<int>(device));
        translator->translatePending(command);
    }
    command.execute(*mEffect);
}

void AupController::setAupEffect(AupEffect& effect, SxContext& context) {
    mEffect = &effect;
    SetParamCommand command(static_cast<int>(kDeviceOutDefault), mBatch);
    for (auto& [device, translator] : mTranslators) {
        command.setDeviceId(static_cast<int>(device));
        translator->translateAll(command);
    }
    command.execute(*mEffect);
    mEffect->setEnabled(context.getAupOn());
}

void AupController::applyEndpoint(SxContext& sx, Port port, bool logMissing) {
    ProfileEndpoint* endpoint = sx.getSelectedProfileEndpoint(port);
    if (endpoint == nullptr) {
        if (logMissing) {
            ALOGE("No profile endpoint found for port : %d", static_cast<int>(port));
        }
        return;
    }
    mContext->setProfileEndpoint(port, *endpoint);
    if (IeqPreset* preset = sx.getSelectedProfileIeq(port)) mContext->setIeqPreset(port, *preset);
}

void AupController::onLoad(SxContext& sx) {
    ALOGI("onLoad()");
    mContext->setProfile(*sx.getSelectedProfile());
    mContext->setGeqPreset(*sx.getSelectedProfileGeq());
    for (const auto& [port, device] : AupContext::kDeviceForPort) {
        applyEndpoint(sx, port, true);
        Tuning* tuning = sx.getSelectedTuning(port);
        if (tuning == nullptr) {
            ALOGE("No tuning found for port : %s", portName(port));
            continue;
        }
        mContext->setTuning(port, *tuning);
    }
    sendParameters(kDeviceOutDefault);
}

// Switching the effect on and off reaches it as parameter values, not here.
void AupController::onAupOnChanged(SxContext&, bool) {}

void AupController::onSelectedProfileChanged(SxContext& sx) {
    ALOGI("Profile Changed to %s", sx.getSelectedProfile()->getName().c_str());
    mContext->setProfile(*sx.getSelectedProfile());
    mContext->setGeqPreset(*sx.getSelectedProfileGeq());
    // A profile change leaves the tunings alone.
    for (const auto& [port, device] : AupContext::kDeviceForPort) applyEndpoint(sx, port, false);
    sendParameters(kDeviceOutDefault);
}

void AupController::onSelectedProfileParameterChanged(SxContext&, Profile& profile) {
    if (mChanged) {
        mContext->updateProfile(profile, *mChanged);
    } else {
        mContext->setProfile(profile);
    }
    sendParameters(kDeviceOutDefault);
}

void AupController::onSelectedProfileEndpointChanged(SxContext&, Port port,
                                                     ProfileEndpoint& endpoint) {
    if (mChanged) {
        mContext->updateProfileEndpoint(port, endpoint, *mChanged);
    } else {
        mContext->setProfileEndpoint(port, endpoint);
    }
    sendParameters(kDeviceOutDefault);
}

void AupController::onSelectedProfileIeqChanged(SxContext&, Port port, IeqPreset& preset) {
    mContext->setIeqPreset(port, preset);
    sendParameters(kDeviceOutDefault);
}

void AupController::onSelectedProfileGeqChanged(SxContext&, GeqPreset& preset) {
    if (mChanged) {
        mContext->updateGeqPreset(preset, *mChanged);
    } else {
        mContext->setGeqPreset(preset);
    }
    sendParameters(kDeviceOutDefault);
}

void AupController::onSelectedTuningChanged(SxContext&, Port port, Tuning& tuning) {
    mContext->setTuning(port, tuning);
    sendParameters(kDeviceOutDefault);
}

}  // namespace vessa
