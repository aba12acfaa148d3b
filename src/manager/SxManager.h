#pragma once

#include <memory>
#include <string>
#include <vector>

#include "context/SxContext.h"
#include "effect/AupController.h"
#include "effect/AupEffect.h"
#include "manager/ParameterAdapter.h"

namespace vessa {

// The one object through which the service reaches the audio state. It wires
// the context, the effect handle, the controller and the parameter adapter
// together, checks request arguments, and holds the "suspended" mask.
class SxManager {
  public:
    SxManager() = default;
    // Takes the controller (and deletes it); the context stays lent.
    SxManager(AupController* controller, SxContext* context);
    ~SxManager();
    SxManager(const SxManager&) = delete;
    SxManager& operator=(const SxManager&) = delete;

    // 0, or -19 when no context could be had.
    int init();
    AupEffect* createAupEffect(int sessionId);
    bool recreateSxEffect();
    bool validateSxEffect();

    void restoreCurrentProfiles();
    void saveSxStateAndSettings();
    void saveSxState();
    void saveSxProfile();
    void saveSxProfileSettings();

    void setSxOn(bool on);
    bool getSxOn();
    void setSxSuspended(bool suspended);
    bool getSxSuspended();

    int getNumOfProfiles();
    int getProfileNameLen(int id);
    std::string getProfileName(int id);
    bool setSelectedProfile(int id);
    int getSelectedProfile();
    bool resetProfile(int id);
    bool isProfileModified(int id);
    std::string getSxVersion();

    bool setParameter(int profileId, int paramId, const std::vector<int>& values);
    std::vector<int> getParameter(int profileId, int paramId);
    int getParamLength(int paramId);
    std::vector<int> getProfilePortParameter(int profileId, int port, int paramId);
    bool setProfilePortParameter(int profileId, int port, int paramId,
                                 const std::vector<int>& values);

    int getAvailableTuningDevicesLen(Port port);
    std::vector<std::string> getAvailableTuningDevices(Port port);
    std::string getSelectedTuningName(Port port);
    bool setSelectedTuning(Port port, const std::string& device);

    bool isMobilityProfileSelected();
    // The misspelling is the interface's own.
    int getVolumeLevelerAount(Port port);
    bool isMonoInternalSpeaker();
    bool isSpeakerPortraitMode();
    int getTuningParamDSA(Port port);
    int getTuningParamDHSA(Port port);
    int getTuningParamDFSA(Port port);
    std::vector<int> getProfileParameter(int profileId, Parameter parameter);

    int reloadTuningXml();
    // Re-reads the tuning files as a start would: the default file when its signature
    // changed (a refill, a new context and controller), then the OEM file. 0 when the
    // effect has the files' values.
    int reloadTuningFiles();
    std::string getDefaultXmlFormatVersion();
    // Why the last save was rolled back; empty while saves succeed.
    std::string getSaveError();

  private:
    // Lets go of the context: the controller stops observing it and goes, with the
    // effect handle and the adapter.
    void tearDown();
    // Recreates the effect handle when the platform took control away.
    void validate();
    bool isProfileInRange(int id);
    bool isRequestInRange(int profileId, int paramId);
    // The endpoint a port's output is tuned as; false (and logged) for a bad port.
    bool endpointForPort(int port, Endpoint* endpoint);
    void checkSessionId(int sessionId);
    // Tells the controller, for the scope of the result, which Parameter the id sets.
    AupController::ParameterChange announceChange(int paramId) const;
    int firstTuningValue(Port port, Parameter parameter);

    std::unique_ptr<AupController> mController;
    SxContext* mContext = nullptr;  // lent by the context manager
    std::unique_ptr<ParameterAdapter> mParameterAdapter;
    std::unique_ptr<AupEffect> mEffect;
    bool mSuspended = false;
    int mSessionId = 0;
    // The request's values, which the adapter clamps in place; kept with its room.
    std::vector<int> mValues;
};

}  // namespace vessa
