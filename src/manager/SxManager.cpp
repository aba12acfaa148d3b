#define LOG_TAG "SxManager"

#include "manager/SxManager.h"

#include <log/log.h>

#include <cerrno>

#include "context/SxContextManager.h"

namespace vessa {

namespace {
constexpr const char* kEffectName = "SxService";
constexpr int kEffectVersionCommand = 3;
constexpr size_t kEffectVersionWords = 20;  // an 80-byte answer buffer
}  // namespace

SxManager::SxManager(AupController* controller, SxContext* context)
    : mController(controller), mContext(context) {}

SxManager::~SxManager() {
    tearDown();
}

void SxManager::tearDown() {
    // The context outlives the manager: stop it from calling a deleted controller.
    if (mContext != nullptr && mController != nullptr) {
        mContext->unregisterObserver(mController.get());
    }
    mEffect.reset();
    mController.reset();
    mParameterAdapter.reset();
    mContext = nullptr;
}

int SxManager::init() {
    // A second call would build a second effect and controller on the same context.
    if (mController != nullptr) return 0;
    // A start that found the database locked is tried again here, at the next client.
    bool started = SxContextManager::hasInstance();
    SxContextManager& contexts = SxContextManager::getInstance();
    mContext = started ? contexts.startContext() : contexts.getSxContext();
    if (mContext == nullptr) return -ENODEV;
    mSessionId = 0;
    mEffect = std::make_unique<AupEffect>(0, android::String16(kEffectName));
    mEffect->setEnabled(true);
    std::vector<int> version(kEffectVersionWords, 0);
    mEffect->receive(kEffectVersionCommand, version);
    ALOGI("Created AUP effect version [ %d ]", version[0]);
    mController = std::make_unique<AupController>(2, *mEffect);
    // Registering delivers onLoad, so the effect gets the whole current state now.
    mContext->registerObserver(mController.get());
    mParameterAdapter = std::make_unique<ParameterAdapter>(mContext);
    return 0;
}

void SxManager::checkSessionId(int sessionId) {
    if (sessionId < 0) {
        ALOGE("AUP effect with specified session Id (%d) is less than zero", sessionId);
    }
}

AupEffect* SxManager::createAupEffect(int sessionId) {
    checkSessionId(sessionId);
    mSessionId = sessionId;
    return new AupEffect(sessionId, android::String16(kEffectName));
}

bool SxManager::recreateSxEffect() {
    checkSessionId(mSessionId);
    // The controller moves to the new effect before the old one goes.
    std::unique_ptr<AupEffect> old = std::move(mEffect);
    mEffect = std::make_unique<AupEffect>(mSessionId, android::String16(kEffectName));
    mController->setAupEffect(*mEffect, *mContext);
    mEffect->setEnabled(true);
    return true;
}

void SxManager::validate() {
    if (mEffect != nullptr && !mEffect->hasControl()) {
        ALOGI("Cannot control the SxEffect, trying to recreate...");
        recreateSxEffect();
    }
}

bool SxManager::validateSxEffect() {
    validate();
    return true;
}

void SxManager::restoreCurrentProfiles() {
    mContext->reloadAllProfile();
}

void SxManager::saveSxStateAndSettings() {
    mContext->save();
}

void SxManager::saveSxState() {
    mContext->saveSxState();
}

void SxManager::saveSxProfile() {
    mContext->saveSxProfile();
}

void SxManager::saveSxProfileSettings() {
    mContext->saveSxProfileSettings();
}

void SxManager::setSxOn(bool on) {
    validate();
    mContext->setAupOn(on);
}

// The service may query a manager that is not initialised yet (its dump does);
// without a context the answers are neutral.
bool SxManager::getSxOn() {
    if (mContext == nullptr) return false;
    if (mSuspended) {
        ALOGI("SX effect is now suspended");
        return false;
    }
    return mContext->getAupOn();
}

void SxManager::setSxSuspended(bool suspended) {
    validate();
    if (mSuspended != suspended) mSuspended = suspended;
}

bool SxManager::getSxSuspended() {
    validate();
    return mSuspended;
}

int SxManager::getNumOfProfiles() {
    return mContext == nullptr ? 0 : mContext->getNumOfProfiles();
}

int SxManager::getProfileNameLen(int id) {
    return static_cast<int>(mContext->getProfile(id)->getName().size()) + 1;
}

bool SxManager::isProfileInRange(int id) {
    return id >= 0 && id < getNumOfProfiles();
}

std::string SxManager::getProfileName(int id) {
    if (!isProfileInRange(id)) {
        ALOGE("Invalid Profile Id!");
        return "";
    }
    return mContext->getProfile(id)->getName();
}

bool SxManager::setSelectedProfile(int id) {
    validate();
    if (!isProfileInRange(id)) return false;
    mContext->setSelectedProfile(id);
    return true;
}

int SxManager::getSelectedProfile() {
    return mContext == nullptr ? -1 : mContext->getSelectedProfile()->getProfileId();
}

bool SxManager::resetProfile(int id) {
    validate();
    if (!isProfileInRange(id)) return false;
    mContext->resetProfile(id);
    return true;
}

bool SxManager::isProfileModified(int id) {
    return isProfileInRange(id) && mContext->isProfileModified(id);
}

std::string SxManager::getSxVersion() {
    return "SX_VERSION_EXTERNAL";
}

bool SxManager::isRequestInRange(int profileId, int paramId) {
    return profileId >= 0 && paramId >= ParameterAdapter::kFirstId && isProfileInRange(profileId);
}

AupController::ParameterChange SxManager::announceChange(int paramId) const {
    Parameter parameter{};
    bool known = mParameterAdapter->findParameter(paramId, &parameter);
    return AupController::ParameterChange(known ? mController.get() : nullptr, parameter);
}

bool SxManager::setParameter(int profileId, int paramId, const std::vector<int>& values) {
    validate();
    if (!isRequestInRange(profileId, paramId) || values.empty()) return false;
    mValues.assign(values.begin(), values.end());
    {
        AupController::ParameterChange change = announceChange(paramId);
        mParameterAdapter->setParameter(profileId, paramId, mValues);
    }
    // Writing the bass enhancer switch also sets the virtual bass switch; the
    // reverse does not hold.
    if (paramId == SettingsTable::kBassEnhancer) {
        AupController::ParameterChange change = announceChange(SettingsTable::kVirtualBass);
        mParameterAdapter->setParameter(profileId, SettingsTable::kVirtualBass, mValues);
    }
    return true;
}

std::vector<int> SxManager::getParameter(int profileId, int paramId) {
    if (!isRequestInRange(profileId, paramId)) return {};
    return mParameterAdapter->getParameter(profileId, paramId);
}

int SxManager::getParamLength(int paramId) {
    if (paramId > ParameterAdapter::kFirstId - 1) {
        return mParameterAdapter->getParameterLength(paramId);
    }
    ALOGE("Invalid paramId!");
    return 0;
}

bool SxManager::endpointForPort(int port, Endpoint* endpoint) {
    if (static_cast<unsigned int>(port) >= static_cast<unsigned int>(kNumPortNames)) {
        ALOGE("Invalid Port!");
        return false;
    }
    *endpoint = endpointForPortName(portName(static_cast<Port>(port)));
    return true;
}

std::vector<int> SxManager::getProfilePortParameter(int profileId, int port, int paramId) {
    Endpoint endpoint;
    if (!endpointForPort(port, &endpoint) || !isRequestInRange(profileId, paramId)) return {};
    return mParameterAdapter->getProfileEndpointParameter(profileId, endpoint, paramId);
}

bool SxManager::setProfilePortParameter(int profileId, int port, int paramId,
                                        const std::vector<int>& values) {
    validate();
    Endpoint endpoint;
    if (!endpointForPort(port, &endpoint) || !isRequestInRange(profileId, paramId)) return false;
    mValues.assign(values.begin(), values.end());
    {
        AupController::ParameterChange change = announceChange(paramId);
        mParameterAdapter->setProfileEndpointParameter(profileId, endpoint, paramId, mValues);
    }
    if (paramId == SettingsTable::kBassEnhancer) {
        AupController::ParameterChange change = announceChange(SettingsTable::kVirtualBass);
        mParameterAdapter->setProfileEndpointParameter(profileId, endpoint,
                                                       SettingsTable::kVirtualBass, mValues);
    }
    return true;
}

int SxManager::getAvailableTuningDevicesLen(Port port) {
    int length = 0;
    for (const std::string& device : getAvailableTuningDevices(port)) {
        length += static_cast<int>(device.size()) + 1;
    }
    return length;
}

std::vector<std::string> SxManager::getAvailableTuningDevices(Port port) {
    return mContext->getAvailableTuningDevice(port);
}

std::string SxManager::getSelectedTuningName(Port port) {
    return mContext->getSelectedTuningDevice(port);
}

bool SxManager::setSelectedTuning(Port port, const std::string& device) {
    return mContext->setSelectedTuning(port, device, false);
}

bool SxManager::isMobilityProfileSelected() {
    return mContext->getSelectedProfile()->isMobility();
}

int SxManager::getVolumeLevelerAount(Port port) {
    ProfileEndpoint* endpoint = mContext->getSelectedProfileEndpoint(port);
    if (endpoint == nullptr) return 0;
    const std::vector<int>& amount = endpoint->valuesOf(Parameter::VOLUME_LEVELER_AMOUNT);
    return amount.empty() ? 0 : amount[0];
}

bool SxManager::isMonoInternalSpeaker() {
    if (mContext == nullptr) return false;
    Tuning* tuning = mContext->getSelectedTuning(Port::INTERNAL_SPEAKER);
    return tuning != nullptr && tuning->isMono();
}

bool SxManager::isSpeakerPortraitMode() {
    const std::vector<int>& orientation =
            mContext->getSelectedTuningParameter(Port::INTERNAL_SPEAKER, Parameter::ORIENTATION);
    return !orientation.empty() && orientation[0] == 0;
}

// A tuning without the value is a configuration error; -1 is the neutral answer.
int SxManager::firstTuningValue(Port port, Parameter parameter) {
    const std::vector<int>& values = mContext->getSelectedTuningParameter(port, parameter);
    return values.empty() ? -1 : values[0];
}

int SxManager::getTuningParamDSA(Port port) {
    return firstTuningValue(port, Parameter::VIRTUALIZER_SURROUND_SPEAKER_ANGLE);
}

int SxManager::getTuningParamDHSA(Port port) {
    return firstTuningValue(port, Parameter::VIRTUALIZER_HEIGHT_SPEAKER_ANGLE);
}

int SxManager::getTuningParamDFSA(Port port) {
    return firstTuningValue(port, Parameter::VIRTUALIZER_FRONT_SPEAKER_ANGLE);
}

std::vector<int> SxManager::getProfileParameter(int profileId, Parameter parameter) {
    return mContext->getProfileParameter(profileId, parameter);
}

int SxManager::reloadTuningFiles() {
    SxContextManager& contexts = SxContextManager::getInstance();
    if (!contexts.defaultFileChanged()) return reloadTuningXml();
    // What a stop would save; then a new default file rebuilds the database as a start
    // does, and with it every record the context and the controller point into, so
    // both are built again.
    ALOGI("The default tuning file changed: starting again.");
    mContext->save();
    tearDown();
    contexts.restart();
    return init();
}

std::string SxManager::getSaveError() {
    return SxContextManager::hasInstance() ? SxContextManager::getInstance().getSaveError() : "";
}

int SxManager::reloadTuningXml() {
    ALOGI("Tell SxContextManager to reload tuning XML.");
    return SxContextManager::getInstance().loadOemTuning();
}

std::string SxManager::getDefaultXmlFormatVersion() {
    return SxContextManager::getInstance().getDefaultXmlFormatVersion();
}

}  // namespace vessa
