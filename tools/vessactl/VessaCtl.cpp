#include "VessaCtl.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ostream>

#include "ParameterTable.h"
#include "dbus/BusConnection.h"
#include "dbus/SignalWaiter.h"
#include "effect/AupParameter.h"
#include "service/FourCC.h"

namespace vessa {

namespace {

// How long a change may take to come back from the service's event thread.
constexpr std::chrono::seconds kApplyTimeout(5);
constexpr uint32_t kReloadCode = android::fourCC("RLTF");
// The service's answer while no client has started its manager.
constexpr int kNotReady = -19;
constexpr size_t kMany = 64;

std::string joined(const std::vector<int32_t>& values) {
    std::string text;
    for (int32_t v : values) text += (text.empty() ? "" : " ") + std::to_string(v);
    return text;
}

std::string portText(int port) {
    return "port " + std::to_string(port) + " " + ParameterTable::portName(port);
}

std::string padded(const std::string& text, size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

}  // namespace

// clang-format off
const VessaCtl::Command VessaCtl::kCommands[] = {
    {"status",   "",                         "effect on/off, selected profile, integer parameters", 0, 0, &VessaCtl::status},
    {"profiles", "",                         "the profiles; * marks the selected one", 0, 0, &VessaCtl::profiles},
    {"on",       "",                         "switch processing on (saved at once)", 0, 0, &VessaCtl::turnOn},
    {"off",      "",                         "switch processing off (saved at once)", 0, 0, &VessaCtl::turnOff},
    {"profile",  "N",                        "select profile N (saved at once)", 1, 1, &VessaCtl::selectProfile},
    {"reset",    "N",                        "reset profile N to its tuning defaults", 1, 1, &VessaCtl::resetProfile},
    {"get",      "PROFILE ID",               "read setting ID of a profile", 2, 2, &VessaCtl::get},
    {"set",      "PROFILE ID VALUE...",      "write setting ID of a profile (every endpoint)", 3, kMany, &VessaCtl::set},
    {"port-get", "PROFILE PORT ID",          "read setting ID for the endpoint of one port", 3, 3, &VessaCtl::portGet},
    {"port-set", "PROFILE PORT ID VALUE...", "write setting ID for the endpoint of one port", 4, kMany, &VessaCtl::portSet},
    {"devices",  "PORT",                     "tuning devices of a port; * marks the selected one", 1, 1, &VessaCtl::devices},
    {"select",   "PORT DEVICE",              "use tuning DEVICE on PORT", 2, 2, &VessaCtl::selectDevice},
    {"reload",   "",                         "re-read the OEM tuning file (integer parameter RLTF)", 0, 0, &VessaCtl::reload},
    {"dump",     "",                         "the service's diagnostic text", 0, 0, &VessaCtl::dump},
    {"watch",    "[--follow]",               "register and print every update until Ctrl-C", 0, 1, &VessaCtl::watch},
    {"store",    "[--pending]",              "effect parameters in the store: DEVICE CODE VALUES", 0, 1, &VessaCtl::store},
    {nullptr, nullptr, nullptr, 0, 0, nullptr},
};
// clang-format on

VessaCtl::VessaCtl(PqsClient& client, Identity identity, std::ostream& out, std::ostream& err)
    : mClient(client), mIdentity(identity), mOut(out), mErr(err) {}

const VessaCtl::Command* VessaCtl::findCommand(const std::string& name) {
    for (const Command* c = kCommands; c->name != nullptr; ++c) {
        if (name == c->name) return c;
    }
    return nullptr;
}

bool VessaCtl::isCommand(const std::string& name) {
    return findCommand(name) != nullptr;
}

void VessaCtl::printUsage(std::ostream& out) {
    out << "Usage: vessactl [--bus session|system|ADDRESS] [--type N] [--uid N] COMMAND [ARGS]\n"
           "\n"
           "Talks to the vessa parameter service (vessad) over D-Bus.\n"
           "\n"
           "Commands:\n";
    for (const Command* c = kCommands; c->name != nullptr; ++c) {
        out << "  " << padded(std::string(c->name) + " " + c->syntax, 34) << c->help << "\n";
    }
    out << "\nSetting ids (ID) and their ranges; the service clamps other values (not 101, 102):\n";
    int count = 0;
    const ParameterTable::ParamId* ids = ParameterTable::paramIds(&count);
    for (int i = 0; i < count; ++i) {
        std::string range = std::to_string(ids[i].min) + ".." + std::to_string(ids[i].max);
        if (ids[i].length > 1) range += " (" + std::to_string(ids[i].length) + " values)";
        out << "  " << ids[i].id << "  " << padded(range, 22) << ids[i].meaning << "\n";
    }
    out << "\nPorts (PORT, a number or a name):";
    for (int port = 0; port < ParameterTable::kNumPorts; ++port) {
        out << " " << port << " " << ParameterTable::portName(port);
    }
    out << "\n"
           "\n"
           "Options:\n"
           "  --bus BUS   session (default), system, or a D-Bus address (unix:path=...)\n"
           "  --type N    client type when registering: 1-4 decoder, 7 game, else ordinary (0)\n"
           "  --uid N     client uid when registering (default: this process id)\n"
           "\n"
           "Changes wait until the service has applied them. A command that registers\n"
           "unregisters when done; an ordinary client leaving makes the service save its state.\n";
}

int VessaCtl::fail(const std::string& message) {
    mErr << "vessactl: " << message << std::endl;
    return kFailed;
}

int VessaCtl::usage(const std::string& message) {
    mErr << "vessactl: " << message << " (see vessactl --help)" << std::endl;
    return kUsage;
}

int VessaCtl::run(const Args& args) {
    const Command* command = args.empty() ? nullptr : findCommand(args[0]);
    if (command == nullptr) {
        return usage(args.empty() ? "no command given" : "unknown command '" + args[0] + "'");
    }
    Args rest(args.begin() + 1, args.end());
    if (rest.size() < command->minArgs || rest.size() > command->maxArgs) {
        return usage(std::string("usage: vessactl ") + command->name + " " + command->syntax);
    }
    int result;
    try {
        result = (this->*command->run)(rest);
    } catch (const sdbus::Error& e) {
        return fail(mClient.explain(e));
    }
    try {
        mClient.unregisterClient();
    } catch (const sdbus::Error&) {
        // The service or the bus went away: there is nothing left to leave.
    }
    return result;
}

// ---- argument parsing ----

bool VessaCtl::parseNumber(const std::string& text, const char* what, long min, long max,
                           int* out) {
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || value < min || value > max) {
        usage(std::string(what) + " must be a number from " + std::to_string(min) + " to " +
              std::to_string(max) + ", not '" + text + "'");
        return false;
    }
    *out = static_cast<int>(value);
    return true;
}

bool VessaCtl::parseProfile(const std::string& text, int* profile) {
    ensureReady();
    int count = profileCount();
    if (count <= 0) {
        fail("the service reports no profiles");
        return false;
    }
    return parseNumber(text, "PROFILE", 0, count - 1, profile);
}

bool VessaCtl::parsePort(const std::string& text, int* port) {
    *port = ParameterTable::parsePort(text);
    if (*port >= 0) return true;
    usage("PORT must be 0 to 6 or a port name, not '" + text + "'");
    return false;
}

bool VessaCtl::parseParamId(const std::string& text, int* id) {
    if (!parseNumber(text, "ID", 101, 116, id)) return false;
    return ParameterTable::findParamId(*id) != nullptr;
}

// ---- talking to the service ----

void VessaCtl::ensureRegistered() {
    if (!mClient.registered()) mClient.registerClient(mIdentity.type, mIdentity.uid);
}

void VessaCtl::ensureReady() {
    if (mClient.registered()) return;
    int status = 0;
    query(PqsRequest::query(PqsRequest::kQueryOnOff), 1, &status);
    if (status == kNotReady) ensureRegistered();
}

bool VessaCtl::apply(const Bytes& blob) {
    ensureRegistered();
    int status = mClient.service().setAupParam(blob);
    if (status != 0) {
        fail("the service refused the request (status " + std::to_string(status) + ")");
        return false;
    }
    auto echo = [&blob](const Bytes& update) { return PqsRequest::isEchoOf(update, blob); };
    if (!mClient.waitForUpdate(echo, kApplyTimeout)) {
        fail("the service accepted the request but did not confirm it in time");
        return false;
    }
    return true;
}

std::vector<int32_t> VessaCtl::query(const Bytes& request, size_t words, int* status) {
    auto [answer, bytes] =
            mClient.service().getAupParam(request, static_cast<uint32_t>(words * sizeof(int32_t)));
    if (status != nullptr) *status = answer;
    return PqsRequest::words(bytes, 0);
}

int VessaCtl::profileCount() {
    return query(PqsRequest::query(PqsRequest::kQueryProfileCount), 1)[0];
}

std::string VessaCtl::profileText(int profile) {
    return std::to_string(profile) + " " + mClient.service().getProfileName(profile);
}

// ---- commands ----

int VessaCtl::status(const Args&) {
    ensureReady();
    bool on = query(PqsRequest::query(PqsRequest::kQueryOnOff), 1)[0] != 0;
    int selected = query(PqsRequest::query(PqsRequest::kQuerySelectedProfile), 1)[0];
    std::string saveError = mClient.service().SaveError();
    if (!saveError.empty()) mOut << "warning: settings not saved: " << saveError << "\n";
    mOut << "effect   " << (on ? "on" : "off") << "\n"
         << "profile  " << profileText(selected) << " (" << profileCount() << " profiles)\n"
         << "integer parameters:\n";
    int count = 0;
    const ParameterTable::IntCode* codes = ParameterTable::intCodes(&count);
    for (int i = 0; i < count; ++i) {
        int64_t value = mClient.service().getIntParam(ParameterTable::packIntCode(codes[i]));
        std::string number = std::to_string(value);
        mOut << "  " << codes[i].code << " "
             << std::string(number.size() < 9 ? 9 - number.size() : 0, ' ') << number << "  "
             << codes[i].meaning << "\n";
    }
    mOut.flush();
    return kOk;
}

int VessaCtl::profiles(const Args&) {
    ensureReady();
    int count = profileCount();
    int selected = query(PqsRequest::query(PqsRequest::kQuerySelectedProfile), 1)[0];
    for (int id = 0; id < count; ++id) {
        bool modified = query(PqsRequest::query(PqsRequest::kQueryProfileModified, id), 1)[0] != 0;
        mOut << (id == selected ? "* " : "  ") << profileText(id)
             << (modified ? "  (modified)" : "") << "\n";
    }
    mOut.flush();
    return kOk;
}

int VessaCtl::onOff(bool on) {
    if (!apply(PqsRequest::onOff(on))) return kFailed;
    bool now = query(PqsRequest::query(PqsRequest::kQueryOnOff), 1)[0] != 0;
    mOut << "effect " << (now ? "on" : "off") << std::endl;
    return now == on ? kOk : fail("the effect did not switch");
}

int VessaCtl::turnOn(const Args&) {
    return onOff(true);
}

int VessaCtl::turnOff(const Args&) {
    return onOff(false);
}

int VessaCtl::selectProfile(const Args& args) {
    int profile = 0;
    if (!parseProfile(args[0], &profile)) return kUsage;
    if (!apply(PqsRequest::selectProfile(profile))) return kFailed;
    int selected = query(PqsRequest::query(PqsRequest::kQuerySelectedProfile), 1)[0];
    mOut << "profile " << profileText(selected) << std::endl;
    return selected == profile ? kOk : fail("the profile was not selected");
}

int VessaCtl::resetProfile(const Args& args) {
    int profile = 0;
    if (!parseProfile(args[0], &profile)) return kUsage;
    if (!apply(PqsRequest::resetProfile(profile))) return kFailed;
    mOut << "profile " << profileText(profile) << " reset" << std::endl;
    return kOk;
}

int VessaCtl::printParameter(int profile, int port, int id) {
    const ParameterTable::ParamId* info = ParameterTable::findParamId(id);
    size_t length = static_cast<size_t>(info->length);
    // The port query packs the profile into four bits.
    if (port >= 0 && profile > 15)
        return fail("a port setting can be read for profiles 0 to 15 only");
    Bytes request = port < 0 ? PqsRequest::query(PqsRequest::kQueryParameter, id, profile)
                             : PqsRequest::portQuery(profile, port, id);
    int status = 0;
    std::vector<int32_t> values = query(request, length, &status);
    if (status != 0) return fail("the service answered status " + std::to_string(status));
    mOut << id << " " << info->name;
    if (port >= 0) mOut << " (" << portText(port) << ")";
    mOut << ": " << joined(values) << std::endl;
    return kOk;
}

int VessaCtl::setParameter(int profile, int port, int id, const Args& texts) {
    const ParameterTable::ParamId* info = ParameterTable::findParamId(id);
    if (texts.size() != static_cast<size_t>(info->length)) {
        return usage(std::to_string(id) + " " + info->name + " takes " +
                     std::to_string(info->length) + " value(s)");
    }
    std::vector<int32_t> values;
    for (const std::string& text : texts) {
        int value = 0;
        if (!parseNumber(text, "VALUE", INT32_MIN, INT32_MAX, &value)) return kUsage;
        values.push_back(value);
    }
    Bytes blob = port < 0 ? PqsRequest::setParameter(profile, id, values)
                          : PqsRequest::setPortParameter(profile, port, id, values);
    if (!apply(blob)) return kFailed;
    return printParameter(profile, port, id);
}

int VessaCtl::get(const Args& args) {
    int profile = 0, id = 0;
    if (!parseParamId(args[1], &id) || !parseProfile(args[0], &profile)) return kUsage;
    return printParameter(profile, -1, id);
}

int VessaCtl::set(const Args& args) {
    int profile = 0, id = 0;
    if (!parseParamId(args[1], &id) || !parseProfile(args[0], &profile)) return kUsage;
    return setParameter(profile, -1, id, Args(args.begin() + 2, args.end()));
}

int VessaCtl::portGet(const Args& args) {
    int profile = 0, port = 0, id = 0;
    if (!parsePort(args[1], &port) || !parseParamId(args[2], &id) ||
        !parseProfile(args[0], &profile)) {
        return kUsage;
    }
    return printParameter(profile, port, id);
}

int VessaCtl::portSet(const Args& args) {
    int profile = 0, port = 0, id = 0;
    if (!parsePort(args[1], &port) || !parseParamId(args[2], &id) ||
        !parseProfile(args[0], &profile)) {
        return kUsage;
    }
    return setParameter(profile, port, id, Args(args.begin() + 3, args.end()));
}

int VessaCtl::devices(const Args& args) {
    int port = 0;
    if (!parsePort(args[0], &port)) return kUsage;
    ensureReady();
    int length = mClient.service().getAvailableTuningDevicesLen(port);
    Bytes names = mClient.service().getAvailableTuningDevices(port, length);
    std::string selected = mClient.service().getSelectedTuningDevice(port);
    mOut << portText(port) << ":\n";
    std::string name;
    bool any = false;
    for (size_t i = 0; i <= names.size(); ++i) {
        if (i < names.size() && names[i] != ' ' && names[i] != 0) {
            name += static_cast<char>(names[i]);
            continue;
        }
        if (name.empty()) continue;
        mOut << (name == selected ? "* " : "  ") << name << "\n";
        name.clear();
        any = true;
    }
    if (!any) mOut << "  (no tuning devices)\n";
    mOut.flush();
    return kOk;
}

int VessaCtl::selectDevice(const Args& args) {
    int port = 0;
    if (!parsePort(args[0], &port)) return kUsage;
    ensureRegistered();
    Bytes name(args[1].begin(), args[1].end());
    mClient.service().setSelectedTuningDevice(port, name);
    auto echo = [&name](const Bytes& update) { return update == name; };
    if (!mClient.waitForUpdate(echo, kApplyTimeout)) {
        return fail("the service did not confirm the selection in time");
    }
    std::string selected = mClient.service().getSelectedTuningDevice(port);
    if (selected != args[1]) {
        return fail(portText(port) + " keeps " + selected + ": '" + args[1] +
                    "' is not one of its tuning devices");
    }
    mOut << portText(port) << ": " << selected << std::endl;
    return kOk;
}

int VessaCtl::reload(const Args&) {
    ensureRegistered();
    mClient.service().setIntParam(kReloadCode, 0);
    // Clients hear an empty update only when the reload succeeded.
    auto reloaded = [](const Bytes& update) { return update.empty(); };
    if (!mClient.waitForUpdate(reloaded, kApplyTimeout)) {
        return fail("the service did not reload the tuning (see its log)");
    }
    mOut << "tuning reloaded" << std::endl;
    return kOk;
}

int VessaCtl::dump(const Args&) {
    // A memory file rather than a pipe: the service writes before it replies,
    // so the text's size must not matter.
    int fd = memfd_create("vessactl-dump", MFD_CLOEXEC);
    if (fd < 0) return fail(std::string("cannot create the dump file: ") + strerror(errno));
    mClient.service().dump(sdbus::UnixFd(fd), {});
    lseek(fd, 0, SEEK_SET);
    char buffer[4096];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof(buffer))) > 0) mOut.write(buffer, n);
    close(fd);
    mOut.flush();
    return kOk;
}

int VessaCtl::watch(const Args& args) {
    const bool follow = !args.empty() && args[0] == "--follow";
    if (!args.empty() && !follow) return usage("usage: vessactl watch [--follow]");
    // Before registering starts the bus thread.
    SignalWaiter events({SIGINT, SIGTERM});
    mClient.setListener([this](const Bytes& update) {
        mOut << PqsRequest::describeUpdate(update) << std::endl;
    });
    mClient.setChangeListener([&events] { events.wake(); });
    ensureRegistered();
    mErr << "vessactl: watching as client type " << mIdentity.type << ", uid " << mIdentity.uid
         << " (Ctrl-C stops)" << std::endl;
    int result = kOk;
    bool away = false;
    while (events.wait() == 0) {
        std::string lost = mClient.busLost();
        if (!lost.empty()) {
            result = fail("lost " + BusConnection::describe(mClient.bus()) + ": " + lost);
            break;
        }
        if (!mClient.serviceRunning() && !away) {
            if (!follow) {
                result = fail("the vessa service left the bus");
                break;
            }
            away = true;
            mErr << "vessactl: the vessa service left the bus; waiting for it to come back"
                 << std::endl;
        } else if (mClient.serviceRunning() && away) {
            away = false;
            mClient.registerAgain();
            mErr << "vessactl: the vessa service is back; registered again" << std::endl;
        }
    }
    mClient.setChangeListener(nullptr);
    mClient.setListener(nullptr);
    return result;
}

int VessaCtl::store(const Args& args) {
    bool pending = !args.empty() && args[0] == "--pending";
    if (!args.empty() && !pending) return usage("usage: vessactl store [--pending]");
    auto [status, entries] = mClient.service().getStoredParams(!pending);
    if (status != 0) return fail("the store answered status " + std::to_string(status));
    char device[16];
    for (const auto& entry : entries) {
        snprintf(device, sizeof(device), "0x%x", entry.get<0>());
        mOut << device << " " << vessa::unpackParameterCode(entry.get<1>()) << " "
             << joined(entry.get<2>()) << "\n";
    }
    mOut.flush();
    return kOk;
}

}  // namespace vessa
