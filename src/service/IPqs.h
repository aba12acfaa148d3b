#pragma once

#include <utils/KeyedVector.h>
#include <utils/RefBase.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/AupParamCache.h"
#include "service/IPqsCallbacks.h"

namespace android {

// The effect's parameter identifier (a packed four-letter code).
using AupParameterId = int32_t;

// The service interface every transport forwards to.
class IPqs : public virtual RefBase {
  public:
    virtual int64_t getIntParam(uint32_t code) = 0;
    virtual void setIntParam(uint32_t code, int64_t value) = 0;
    virtual int setAupParam(const void* data, uint32_t length) = 0;
    virtual int getAupParam(const void* in, uint32_t inLength, void* out, uint32_t outLength) = 0;
    virtual int setParam(uint32_t device, AupParameterId parameterId, const int* values,
                         uint32_t count) = 0;
    virtual int commitChange() = 0;
    virtual int getStoredParams(KeyedVector<uint32_t, vessa::AupParamCache*>* params,
                                bool committed, int* count) = 0;
    virtual std::string getProfileName(int id) = 0;
    virtual int getAvailableTuningDevicesLen(int port) = 0;
    virtual void getAvailableTuningDevices(int port, void* buffer, int length) = 0;
    virtual std::string getSelectedTuningDevice(int port) = 0;
    virtual void setSelectedTuningDevice(int port, const void* name, int length) = 0;
    virtual void registerClient(const sp<IPqsCallbacks>& callbacks, int type, uint32_t uid) = 0;
    virtual void unregisterClient(const sp<IPqsCallbacks>& callbacks, int type, uint32_t uid) = 0;
    virtual void dump(int fd, const std::vector<std::string>& args) = 0;
    virtual bool hasDecCP() = 0;
    virtual bool getAupEnabled() = 0;
    virtual bool isMobilityProfileSelected() = 0;
    virtual bool isMonoInternalSpeaker() = 0;
    virtual bool isSpeakerPortraitMode() = 0;
    virtual int getVolumeLevelerAount() = 0;
    virtual int getTuningParamDSA() = 0;
    virtual int getTuningParamDHSA() = 0;
    virtual int getTuningParamDFSA() = 0;
    virtual int getDialogEnhancerAmount() = 0;
    virtual int getActiveDevice() = 0;
    virtual int64_t getDefaultXmlFormatVersion() = 0;

    // Beside the interface's requests: why the last save of the settings failed,
    // empty while they are saved.
    virtual std::string getSaveError() { return std::string(); }
};

}  // namespace android
