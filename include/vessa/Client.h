#pragma once

// The client side of the vessa parameter service, for any program that reads or
// changes the effect's settings: typed calls over D-Bus, decoded updates, and
// errors as values. Nothing here throws.
//
//   auto client = vessa::client::Client::connect("session");
//   if (!client) return fail(client.error().message);
//   auto profile = client.value().selectedProfile();
//   client.value().setSetting(profile.value(), 107, {12});  // ieq-amount

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vessa/Export.h"
#include "vessa/IntCode.h"
#include "vessa/Result.h"
#include "vessa/Setting.h"
#include "vessa/Update.h"

namespace vessa::client {

// One entry of the effect's parameter store.
struct StoredParam {
    uint32_t device;   // an output-device bit of the platform
    uint32_t id;       // the effect's parameter code
    std::string code;  // the same code as four characters
    std::vector<int32_t> values;
};

// A connection to the service. Reads that need the service's settings, and every
// change, register this client on first use (the service loads its settings for
// its first client); the client leaves when it is destroyed, and an ordinary
// client leaving makes the service save its state. Changes return once the
// service has applied them.
class VESSA_EXPORT Client {
  public:
    // How this client registers: type 1 to 4 is a decoder, 7 a game, others ordinary.
    struct Identity {
        int type = 0;
        uint32_t uid = 0;
    };
    using UpdateListener = std::function<void(const Update&)>;

    // `bus`: "session", "system" or a D-Bus address such as "unix:path=/run/bus".
    static Result<Client> connect(const std::string& bus);
    static Result<Client> connect(const std::string& bus, Identity identity);
    Client(Client&&) noexcept;
    Client& operator=(Client&&) noexcept;
    ~Client();

    // ---- the effect and its profiles ----
    Result<bool> effectEnabled();
    Result<void> setEffectEnabled(bool on);
    Result<int> profileCount();
    Result<std::string> profileName(int profile);
    Result<int> selectedProfile();
    Result<void> selectProfile(int profile);
    Result<bool> profileModified(int profile);
    Result<void> resetProfile(int profile);
    Result<bool> monoInternalSpeaker();

    // ---- settings (ids 101 to 116; see settings()) ----
    // The profile's value: the speaker endpoint's for a per-endpoint setting.
    Result<std::vector<int32_t>> setting(int profile, int id);
    // The value for the endpoint of one port (profiles 0 to 15).
    Result<std::vector<int32_t>> portSetting(int profile, int port, int id);
    // The value as stored, after any clamping.
    Result<std::vector<int32_t>> setSetting(int profile, int id,
                                            const std::vector<int32_t>& values);
    Result<std::vector<int32_t>> setPortSetting(int profile, int port, int id,
                                                const std::vector<int32_t>& values);

    // ---- tuning devices of a port ----
    Result<std::vector<std::string>> tuningDevices(int port);
    Result<std::string> selectedTuningDevice(int port);
    // Fails with REFUSED when `name` is not one of the port's tuning devices.
    Result<void> selectTuningDevice(int port, const std::string& name);
    // Re-reads the OEM tuning file; every registered client is told.
    Result<void> reloadTuning();

    // ---- integer parameters, the effect's parameter store, diagnostics ----
    Result<int64_t> intParam(IntCode code);
    Result<std::vector<StoredParam>> storedParams(bool committed = true);
    Result<void> setStoredParam(uint32_t device, uint32_t id, const std::vector<int32_t>& values);
    Result<void> commitStoredParams();
    Result<std::string> dump();
    // Why the last save failed; empty when the settings are saved.
    Result<std::string> saveError();

    // ---- updates ----
    // Registers (if not yet) and hands every update to `listener` on the bus thread.
    Result<void> listen(UpdateListener listener);
    // Called on the bus thread when the bus is lost, or the service leaves or comes back.
    void onPresenceChange(std::function<void()> changed);
    bool serviceRunning() const;
    // Why the bus was lost; empty while it is there.
    std::string busLost() const;
    // Registers again with the same identity, after the service came back.
    Result<void> registerAgain();
    Result<void> unregister();

    // ---- the tables clients print from ----
    static const std::vector<Setting>& settings();
    static const Setting* findSetting(int id);
    static const Setting* findSetting(const std::string& name);
    static const std::vector<IntCodeInfo>& intCodes();
    static constexpr int kNumPorts = 7;
    // "internal_speaker", "hdmi", "miracast", "headphone", "bluetooth", "usb", "other".
    static const char* portName(int port);
    // A port number from its name or its decimal number; -1 for neither.
    static int findPort(const std::string& text);
    // "port 3 headphone".
    static std::string describePort(int port);
    // The endpoint kind a port's output is tuned as: "speaker", "headphone" or "other".
    static const char* portEndpoint(int port);
    // The one endpoint a FIXED_ENDPOINT setting applies to ("headphone" for 101); null
    // for any other setting.
    static const char* settingEndpoint(int id);
    // The port name of an output-device bit of the store ("headphone" for 0x8),
    // "default" for the profile-wide entries (0x40000000), else the bit in hex.
    static std::string describeDevice(uint32_t device);
    // "1 2 3".
    static std::string describeValues(const std::vector<int32_t>& values);
    // "the session bus", "the system bus" or "the bus at ADDRESS".
    static std::string describeBus(const std::string& bus);
    // One line for an update, e.g. "profile 2: 107 ieq-amount = 12".
    static std::string describe(const Update& update);

  private:
    class Impl;
    explicit Client(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> mImpl;
};

}  // namespace vessa::client
