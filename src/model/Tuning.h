#pragma once

#include <map>
#include <string>

#include "model/ParameterValues.h"
#include "model/Vocabulary.h"

namespace vessa {

// The acoustic tuning of one output device: a named set of device-level parameters.
class Tuning : public ParameterValues {
public:
    static const ParamSet kValidParams;
    static const std::map<std::string, Endpoint>& kEndpNameToEndpoint;

    // Read from a tuning file: read-only, dirty, not stored yet.
    Tuning(const std::string& name, Endpoint endpoint, bool isMono);
    // Read from the database: the id is taken as 32-bit and sign-widened; clean.
    Tuning(long id, const std::string& name, Endpoint endpoint, bool isMono, bool readonly);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    std::string getName() const { return mName; }
    Endpoint getEndpoint() const { return mEndpoint; }
    bool isMono() const { return mIsMono; }
    bool isReadonly() const { return mReadonly; }
    // Neither setter touches the dirty flag.
    void setMono(bool mono) { mIsMono = mono; }
    // Accepts only "speaker", "headphone" and "other"; other text is ignored.
    void setEndpoint(const std::string& endpointName);

    std::string toString() const;

private:
    std::string mName;
    Endpoint mEndpoint;
    bool mIsMono;
    bool mReadonly;
};

}  // namespace vessa
