#pragma once

#include <gmock/gmock.h>

#include "service/IPqs.h"

namespace vessa::test {

class MockPqs : public android::IPqs {
  public:
    MOCK_METHOD(int64_t, getIntParam, (uint32_t), (override));
    MOCK_METHOD(void, setIntParam, (uint32_t, int64_t), (override));
    MOCK_METHOD(int, setAupParam, (const void*, uint32_t), (override));
    MOCK_METHOD(int, getAupParam, (const void*, uint32_t, void*, uint32_t), (override));
    MOCK_METHOD(int, setParam, (uint32_t, android::AupParameterId, const int*, uint32_t),
                (override));
    MOCK_METHOD(int, commitChange, (), (override));
    MOCK_METHOD(int, getStoredParams,
                ((android::KeyedVector<uint32_t, vessa::AupParamCache*>*), bool, int*), (override));
    MOCK_METHOD(std::string, getProfileName, (int), (override));
    MOCK_METHOD(int, getAvailableTuningDevicesLen, (int), (override));
    MOCK_METHOD(void, getAvailableTuningDevices, (int, void*, int), (override));
    MOCK_METHOD(std::string, getSelectedTuningDevice, (int), (override));
    MOCK_METHOD(void, setSelectedTuningDevice, (int, const void*, int), (override));
    MOCK_METHOD(void, registerClient, (const android::sp<android::IPqsCallbacks>&, int, uint32_t),
                (override));
    MOCK_METHOD(void, unregisterClient, (const android::sp<android::IPqsCallbacks>&, int, uint32_t),
                (override));
    MOCK_METHOD(void, dump, (int, const std::vector<std::string>&), (override));
    MOCK_METHOD(bool, hasDecCP, (), (override));
    MOCK_METHOD(bool, getAupEnabled, (), (override));
    MOCK_METHOD(bool, isMobilityProfileSelected, (), (override));
    MOCK_METHOD(bool, isMonoInternalSpeaker, (), (override));
    MOCK_METHOD(bool, isSpeakerPortraitMode, (), (override));
    MOCK_METHOD(int, getVolumeLevelerAount, (), (override));
    MOCK_METHOD(int, getTuningParamDSA, (), (override));
    MOCK_METHOD(int, getTuningParamDHSA, (), (override));
    MOCK_METHOD(int, getTuningParamDFSA, (), (override));
    MOCK_METHOD(int, getDialogEnhancerAmount, (), (override));
    MOCK_METHOD(int, getActiveDevice, (), (override));
    MOCK_METHOD(int64_t, getDefaultXmlFormatVersion, (), (override));
};

}  // namespace vessa::test
