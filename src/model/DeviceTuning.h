#pragma once

#include <cstdint>
#include <string>

namespace vessa {

// Binds an output device name on a port to the name of the tuning it uses.
class DeviceTuning {
public:
    // Both constructors leave the record dirty, also the one given a row id.
    DeviceTuning(const std::string& device, const std::string& port, const std::string& tuning);
    DeviceTuning(long long id, const std::string& device, const std::string& port,
                 const std::string& tuning);

    virtual int64_t getId() const;
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);
    virtual ~DeviceTuning();

    std::string getDevice() const { return mDevice; }
    std::string getPort() const { return mPort; }
    std::string getTuning() const { return mTuning; }

    std::string toString() const;

private:
    int64_t mId;
    std::string mDevice;
    std::string mPort;
    std::string mTuning;
    bool mDirty;
};

}  // namespace vessa
