#include "vessa/Client.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "client/PqsClient.h"
#include "dbus/BusConnection.h"
#include "dbus/PqsNames.h"
#include "effect/AupContext.h"
#include "effect/AupParameter.h"
#include "model/Vocabulary.h"
#include "protocol/PqsProtocol.h"
#include "protocol/SettingsTable.h"

namespace vessa::client {

namespace {

using Bytes = PqsProtocol::Bytes;

// How long a change may take to come back from the service's event thread.
constexpr std::chrono::seconds kApplyTimeout(5);
// The service's status while no client has started it.
constexpr int kNotReady = -ENODEV;

Error error(Error::Code code, std::string message) {
    return Error{code, std::move(message)};
}

std::string settingText(int id, const std::vector<int32_t>& values) {
    const Setting* setting = Client::findSetting(id);
    return std::to_string(id) + " " + (setting != nullptr ? setting->name : "(unknown)") + " = " +
           Client::describeValues(values);
}

}  // namespace

class Client::Impl {
  public:
    Impl(const std::string& bus, Identity identity) : mClient(bus), mIdentity(identity) {}

    // Runs one call of the generated proxy; a bus failure becomes an Error.
    template <typename T, typename Call>
    Result<T> call(Call&& run) {
        try {
            return run();
        } catch (const sdbus::Error& e) {
            return errorFor(e);
        }
    }

    Error errorFor(const sdbus::Error& e) const {
        const std::string name = e.getName();
        const std::string where = BusConnection::describe(mClient.bus());
        auto is = [&name](const char* member) {
            return name == std::string("org.freedesktop.DBus.Error.") + member;
        };
        if (is("ServiceUnknown") || is("NameHasNoOwner")) {
            return error(Error::Code::NOT_RUNNING,
                         std::string("the vessa service (") + kPqsServiceName +
                                 ") is not running on " + where + "; start it with: vessad --bus " +
                                 mClient.bus());
        }
        if (is("NoReply") || is("Timeout") || is("TimedOut")) {
            return error(Error::Code::NO_REPLY,
                         "the vessa service on " + where + " did not answer in time");
        }
        if (is("AccessDenied")) {
            // The bus's own text names every matched rule; the policy's intent is shorter.
            return error(Error::Code::ACCESS_DENIED,
                         "access denied by the bus policy (" + std::string(kPqsServiceName) +
                                 ".conf): on " + where +
                                 " only root, the user vessa and members of the group audio "
                                 "may change settings");
        }
        if (is("UnknownObject") || is("UnknownInterface") || is("UnknownMethod")) {
            return error(Error::Code::BUS,
                         std::string("the owner of ") + kPqsServiceName + " on " + where +
                                 " does not serve this request: " + e.getMessage());
        }
        return error(Error::Code::BUS, name + ": " + e.getMessage());
    }

    Result<void> ensureRegistered() {
        if (mClient.registered()) return {};
        return call<void>([this]() -> Result<void> {
            mClient.registerClient(mIdentity.type, mIdentity.uid);
            return {};
        });
    }

    // The service answers its reads only once a client has started it.
    Result<void> ensureReady() {
        if (mClient.registered()) return {};
        Result<int32_t> status = call<int32_t>([this]() -> Result<int32_t> {
            return std::get<0>(mClient.service().getAupParam(
                    PqsProtocol::query(PqsProtocol::kQueryOnOff), sizeof(int32_t)));
        });
        if (!status) return status.error();
        return status.value() == kNotReady ? ensureRegistered() : Result<void>();
    }

    Result<std::vector<int32_t>> query(const Bytes& request, size_t words) {
        if (Result<void> ready = ensureReady(); !ready) return ready.error();
        return call<std::vector<int32_t>>([&]() -> Result<std::vector<int32_t>> {
            auto [status, bytes] = mClient.service().getAupParam(
                    request, static_cast<uint32_t>(words * sizeof(int32_t)));
            if (status != 0) {
                return error(Error::Code::REFUSED,
                             "the service answered status " + std::to_string(status));
            }
            return PqsProtocol::words(bytes.data(), bytes.size(), 0);
        });
    }

    Result<int> queryWord(PqsProtocol::QueryCommand command, int32_t profile = 0) {
        Result<std::vector<int32_t>> words = query(PqsProtocol::query(command, profile), 1);
        if (!words) return words.error();
        return words.value().empty() ? 0 : words.value()[0];
    }

    Result<bool> queryFlag(PqsProtocol::QueryCommand command, int32_t profile = 0) {
        Result<int> word = queryWord(command, profile);
        if (!word) return word.error();
        return word.value() != 0;
    }

    // A setting query answers as many words as the setting has values.
    Result<std::vector<int32_t>> querySetting(int id, const Bytes& request) {
        const Setting* info = findSetting(id);
        if (info == nullptr) {
            return error(Error::Code::INVALID, "no setting has id " + std::to_string(id));
        }
        return query(request, static_cast<size_t>(info->length));
    }

    // Sends an update-producing request and waits until its update comes back.
    Result<void> applyAndWait(const std::function<Result<void>()>& send,
                              const std::function<bool(const Bytes&)>& done,
                              const std::string& late) {
        if (Result<void> registered = ensureRegistered(); !registered) return registered;
        if (Result<void> sent = call<void>(send); !sent) return sent;
        if (!mClient.waitForUpdate(done, kApplyTimeout)) return error(Error::Code::NO_REPLY, late);
        return {};
    }

    Result<void> apply(const Bytes& blob) {
        return applyAndWait(
                [&]() -> Result<void> {
                    int status = mClient.service().setAupParam(blob);
                    if (status == 0) return {};
                    return error(Error::Code::REFUSED, "the service refused the request (status " +
                                                               std::to_string(status) + ")");
                },
                [&blob](const Bytes& update) { return PqsProtocol::isEchoOf(update, blob); },
                "the service accepted the request but did not confirm it in time");
    }

    PqsClient mClient;
    Identity mIdentity;
};

// ---- connection ----

Result<Client> Client::connect(const std::string& bus) {
    return connect(bus, Identity());
}

Result<Client> Client::connect(const std::string& bus, Identity identity) {
    auto impl = std::make_unique<Impl>(bus, identity);
    std::string reason;
    if (!impl->mClient.connect(&reason)) return error(Error::Code::BUS, reason);
    return Client(std::move(impl));
}

Client::Client(std::unique_ptr<Impl> impl) : mImpl(std::move(impl)) {}
Client::Client(Client&&) noexcept = default;
Client& Client::operator=(Client&&) noexcept = default;
Client::~Client() = default;

// ---- the effect and its profiles ----

Result<bool> Client::effectEnabled() {
    return mImpl->queryFlag(PqsProtocol::kQueryOnOff);
}

Result<void> Client::setEffectEnabled(bool on) {
    return mImpl->apply(PqsProtocol::onOff(on));
}

Result<int> Client::profileCount() {
    return mImpl->queryWord(PqsProtocol::kQueryProfileCount);
}

Result<std::string> Client::profileName(int profile) {
    if (Result<void> ready = mImpl->ensureReady(); !ready) return ready.error();
    return mImpl->call<std::string>([&]() -> Result<std::string> {
        return mImpl->mClient.service().getProfileName(profile);
    });
}

Result<int> Client::selectedProfile() {
    return mImpl->queryWord(PqsProtocol::kQuerySelectedProfile);
}

Result<void> Client::selectProfile(int profile) {
    return mImpl->apply(PqsProtocol::selectProfile(profile));
}

Result<bool> Client::profileModified(int profile) {
    return mImpl->queryFlag(PqsProtocol::kQueryProfileModified, profile);
}

Result<void> Client::resetProfile(int profile) {
    return mImpl->apply(PqsProtocol::resetProfile(profile));
}

Result<bool> Client::monoInternalSpeaker() {
    return mImpl->queryFlag(PqsProtocol::kQueryMonoSpeaker);
}

// ---- settings ----

Result<std::vector<int32_t>> Client::setting(int profile, int id) {
    return mImpl->querySetting(id, PqsProtocol::query(PqsProtocol::kQueryParameter, profile, id));
}

Result<std::vector<int32_t>> Client::portSetting(int profile, int port, int id) {
    bool known = findSetting(id) != nullptr;  // an unknown id is reported first
    if (known && (profile < 0 || profile > PqsProtocol::kMaxPortQueryProfile)) {
        return error(Error::Code::INVALID, "a port setting can be read for profiles 0 to 15 only");
    }
    return mImpl->querySetting(id, PqsProtocol::portQuery(profile, port, id));
}

Result<std::vector<int32_t>> Client::setSetting(int profile, int id,
                                                const std::vector<int32_t>& values) {
    if (Result<void> applied = mImpl->apply(PqsProtocol::setParameter(profile, id, values));
        !applied) {
        return applied.error();
    }
    return setting(profile, id);
}

Result<std::vector<int32_t>> Client::setPortSetting(int profile, int port, int id,
                                                    const std::vector<int32_t>& values) {
    Result<void> applied = mImpl->apply(PqsProtocol::setPortParameter(profile, port, id, values));
    if (!applied) return applied.error();
    return portSetting(profile, port, id);
}

// ---- tuning devices ----

Result<std::vector<std::string>> Client::tuningDevices(int port) {
    if (Result<void> ready = mImpl->ensureReady(); !ready) return ready.error();
    return mImpl->call<std::vector<std::string>>([&]() -> Result<std::vector<std::string>> {
        auto& service = mImpl->mClient.service();
        Bytes names =
                service.getAvailableTuningDevices(port, service.getAvailableTuningDevicesLen(port));
        // Names are separated by a blank; the buffer is padded with blanks.
        std::vector<std::string> devices;
        std::string name;
        for (size_t i = 0; i <= names.size(); ++i) {
            if (i < names.size() && names[i] != ' ' && names[i] != 0) {
                name += static_cast<char>(names[i]);
            } else if (!name.empty()) {
                devices.push_back(std::move(name));
                name.clear();
            }
        }
        return devices;
    });
}

Result<std::string> Client::selectedTuningDevice(int port) {
    if (Result<void> ready = mImpl->ensureReady(); !ready) return ready.error();
    return mImpl->call<std::string>([&]() -> Result<std::string> {
        return mImpl->mClient.service().getSelectedTuningDevice(port);
    });
}

Result<void> Client::selectTuningDevice(int port, const std::string& name) {
    Bytes bytes(name.begin(), name.end());
    Result<void> applied = mImpl->applyAndWait(
            [&]() -> Result<void> {
                mImpl->mClient.service().setSelectedTuningDevice(port, bytes);
                return {};
            },
            [&bytes](const Bytes& update) { return update == bytes; },
            "the service did not confirm the selection in time");
    if (!applied) return applied;
    Result<std::string> selected = selectedTuningDevice(port);
    if (!selected) return selected.error();
    if (selected.value() != name) {
        return error(Error::Code::REFUSED, Client::describePort(port) + " keeps " +
                                                   selected.value() + ": '" + name +
                                                   "' is not one of its tuning devices");
    }
    return {};
}

Result<void> Client::reloadTuning() {
    // Clients hear an empty update only when the reload succeeded.
    return mImpl->applyAndWait(
            [this]() -> Result<void> {
                mImpl->mClient.service().setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING),
                                                     0);
                return {};
            },
            [](const Bytes& update) { return update.empty(); },
            "the service did not reload the tuning (see its log)");
}

// ---- integer parameters, the store, diagnostics ----

Result<int64_t> Client::intParam(IntCode code) {
    return mImpl->call<int64_t>([&]() -> Result<int64_t> {
        return mImpl->mClient.service().getIntParam(static_cast<uint32_t>(code));
    });
}

Result<std::vector<StoredParam>> Client::storedParams(bool committed) {
    return mImpl->call<std::vector<StoredParam>>([&]() -> Result<std::vector<StoredParam>> {
        auto [status, entries] = mImpl->mClient.service().getStoredParams(committed);
        if (status != 0) {
            return error(Error::Code::REFUSED,
                         "the store answered status " + std::to_string(status));
        }
        std::vector<StoredParam> params;
        params.reserve(entries.size());
        for (auto& entry : entries) {
            params.push_back({entry.get<0>(), entry.get<1>(), unpackParameterCode(entry.get<1>()),
                              std::move(entry.get<2>())});
        }
        return params;
    });
}

Result<void> Client::setStoredParam(uint32_t device, uint32_t id,
                                    const std::vector<int32_t>& values) {
    return mImpl->call<void>([&]() -> Result<void> {
        int status = mImpl->mClient.service().setParam(device, id, values);
        if (status != 0) {
            return error(Error::Code::REFUSED,
                         "the store refused the entry (status " + std::to_string(status) + ")");
        }
        return {};
    });
}

Result<void> Client::commitStoredParams() {
    return mImpl->call<void>([&]() -> Result<void> {
        int status = mImpl->mClient.service().commitChange();
        if (status != 0) {
            return error(Error::Code::REFUSED,
                         "the store refused the commit (status " + std::to_string(status) + ")");
        }
        return {};
    });
}

Result<std::string> Client::dump() {
    // A memory file rather than a pipe: the service writes before it replies,
    // so the text's size must not matter.
    int fd = memfd_create("vessa-dump", MFD_CLOEXEC);
    if (fd < 0) {
        return error(Error::Code::BUS,
                     std::string("cannot create the dump file: ") + strerror(errno));
    }
    sdbus::UnixFd owned(fd, sdbus::adopt_fd);
    Result<void> dumped = mImpl->call<void>([&]() -> Result<void> {
        mImpl->mClient.service().dump(owned, {});
        return {};
    });
    if (!dumped) return dumped.error();
    std::string text;
    char buffer[4096];
    ssize_t n;
    lseek(owned.get(), 0, SEEK_SET);
    while ((n = read(owned.get(), buffer, sizeof(buffer))) > 0) text.append(buffer, n);
    return text;
}

Result<std::string> Client::saveError() {
    return mImpl->call<std::string>(
            [&]() -> Result<std::string> { return mImpl->mClient.service().SaveError(); });
}

// ---- updates ----

Result<void> Client::listen(UpdateListener listener) {
    if (!listener) {
        mImpl->mClient.setListener(nullptr);
        return {};
    }
    mImpl->mClient.setListener([listener = std::move(listener)](const Bytes& bytes) {
        listener(PqsProtocol::readUpdate(bytes));
    });
    return mImpl->ensureRegistered();
}

void Client::onPresenceChange(std::function<void()> changed) {
    mImpl->mClient.setChangeListener(std::move(changed));
}

bool Client::serviceRunning() const {
    return mImpl->mClient.serviceRunning();
}

std::string Client::busLost() const {
    return mImpl->mClient.busLost();
}

Result<void> Client::registerAgain() {
    return mImpl->call<void>([&]() -> Result<void> {
        mImpl->mClient.registerAgain();
        return {};
    });
}

Result<void> Client::unregister() {
    return mImpl->call<void>([&]() -> Result<void> {
        mImpl->mClient.unregisterClient();
        return {};
    });
}

// ---- tables ----

const std::vector<Setting>& Client::settings() {
    static const std::vector<Setting> kSettings = [] {
        std::vector<Setting> settings;
        for (const SettingsTable::Row& row : SettingsTable::rows()) settings.push_back(row.setting);
        return settings;
    }();
    return kSettings;
}

const Setting* Client::findSetting(int id) {
    const SettingsTable::Row* row = SettingsTable::find(id);
    return row == nullptr ? nullptr : &row->setting;
}

const Setting* Client::findSetting(const std::string& name) {
    const SettingsTable::Row* row = SettingsTable::find(name);
    return row == nullptr ? nullptr : &row->setting;
}

const std::vector<IntCodeInfo>& Client::intCodes() {
    return PqsProtocol::intCodes();
}

const char* Client::portName(int port) {
    return port >= 0 && port < kNumPorts ? vessa::portName(static_cast<Port>(port)) : "?";
}

int Client::findPort(const std::string& text) {
    for (int port = 0; port < kNumPorts; ++port) {
        if (text == portName(port)) return port;
    }
    if (text.empty() || text.size() > 2 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return -1;
    }
    int port = std::atoi(text.c_str());
    return port < kNumPorts ? port : -1;
}

std::string Client::describePort(int port) {
    return "port " + std::to_string(port) + " " + portName(port);
}

const char* Client::portEndpoint(int port) {
    if (port < 0 || port >= kNumPorts) return "?";
    return endpointName(endpointForPortName(portName(port)));
}

const char* Client::settingEndpoint(int id) {
    const SettingsTable::Row* row = SettingsTable::find(id);
    if (row == nullptr || row->setting.level != Setting::Level::FIXED_ENDPOINT) return nullptr;
    return endpointName(row->endpoint);
}

std::string Client::describeDevice(uint32_t device) {
    if (device == kDeviceOutDefault) return "default";
    auto found = AupContext::kPortForDevice.find(device);
    if (found != AupContext::kPortForDevice.end()) return portName(static_cast<int>(found->second));
    char hex[16];
    snprintf(hex, sizeof(hex), "0x%x", device);
    return hex;
}

std::string Client::describeValues(const std::vector<int32_t>& values) {
    std::string text;
    for (int32_t v : values) text += (text.empty() ? "" : " ") + std::to_string(v);
    return text;
}

std::string Client::describeBus(const std::string& bus) {
    return BusConnection::describe(bus);
}

std::string Client::describe(const Update& update) {
    const std::string profile = "profile " + std::to_string(update.profile);
    switch (update.kind) {
        case Update::Kind::TUNING_RELOADED:
            return "parameters changed (tuning reloaded)";
        case Update::Kind::CLIENTS_CHANGED:
            return "clients changed";
        case Update::Kind::EFFECT_SWITCHED:
            return std::string("effect ") + (update.on ? "on" : "off");
        case Update::Kind::SETTING_CHANGED:
            return profile + ": " + settingText(update.id, update.values);
        case Update::Kind::PORT_SETTING_CHANGED:
            return profile + ", " + Client::describePort(update.port) + ": " +
                   settingText(update.id, update.values);
        case Update::Kind::PROFILE_SELECTED:
            return profile + " selected";
        case Update::Kind::PROFILE_RESET:
            return profile + " reset";
        case Update::Kind::OTHER_COMMAND:
            return "blob command " + std::to_string(update.command) + " (no action)";
        case Update::Kind::TUNING_SELECTED:
            return "tuning device selected: " + update.tuning;
        case Update::Kind::UNKNOWN:
            break;
    }
    std::string text = "bytes ";
    static const char kHex[] = "0123456789abcdef";
    for (uint8_t b : update.bytes) {
        text += kHex[b >> 4];
        text += kHex[b & 0x0f];
    }
    return text;
}

}  // namespace vessa::client
