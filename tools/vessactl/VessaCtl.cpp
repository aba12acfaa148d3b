#include "VessaCtl.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <ostream>

namespace vessa {

using client::Client;
using client::Error;
using client::Setting;
using client::Update;

namespace {

constexpr size_t kMany = 64;

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

VessaCtl::VessaCtl(Client& client, Client::Identity identity, const std::string& bus,
                   std::ostream& out, std::ostream& err)
    : mClient(client), mIdentity(identity), mBus(bus), mOut(out), mErr(err) {}

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
    for (const Setting& setting : Client::settings()) {
        std::string range = std::to_string(setting.min) + ".." + std::to_string(setting.max);
        if (setting.length > 1) range += " (" + std::to_string(setting.length) + " values)";
        out << "  " << setting.id << "  " << padded(setting.name, 26) << padded(range, 22)
            << setting.help << "\n";
    }
    out << "\nPorts (PORT, a number or a name):";
    for (int port = 0; port < Client::kNumPorts; ++port) {
        out << " " << port << " " << Client::portName(port);
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

int VessaCtl::fail(const Error& error) {
    return fail(error.message);
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
    int result = (this->*command->run)(rest);
    // An error here means the service or the bus went away: nothing is left to leave.
    mClient.unregister();
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
    client::Result<int> count = mClient.profileCount();
    if (!count) {
        fail(count.error());
        return false;
    }
    if (count.value() <= 0) {
        fail("the service reports no profiles");
        return false;
    }
    return parseNumber(text, "PROFILE", 0, count.value() - 1, profile);
}

bool VessaCtl::parsePort(const std::string& text, int* port) {
    *port = Client::findPort(text);
    if (*port >= 0) return true;
    usage("PORT must be 0 to " + std::to_string(Client::kNumPorts - 1) + " or a port name, not '" +
          text + "'");
    return false;
}

bool VessaCtl::parseParamId(const std::string& text, int* id) {
    const std::vector<Setting>& settings = Client::settings();
    if (!parseNumber(text, "ID", settings.front().id, settings.back().id, id)) return false;
    return Client::findSetting(*id) != nullptr;
}

// ---- commands ----

std::string VessaCtl::profileText(int profile) {
    return std::to_string(profile) + " " + mClient.profileName(profile).valueOr("");
}

int VessaCtl::status(const Args&) {
    client::Result<bool> on = mClient.effectEnabled();
    if (!on) return fail(on.error());
    int selected = mClient.selectedProfile().valueOr(-1);
    std::string saveError = mClient.saveError().valueOr("");
    if (!saveError.empty()) mOut << "warning: settings not saved: " << saveError << "\n";
    mOut << "effect   " << (on.value() ? "on" : "off") << "\n"
         << "profile  " << profileText(selected) << " (" << mClient.profileCount().valueOr(0)
         << " profiles)\n"
         << "integer parameters:\n";
    for (const client::IntCodeInfo& code : Client::intCodes()) {
        client::Result<int64_t> value = mClient.intParam(code.code);
        if (!value) return fail(value.error());
        std::string number = std::to_string(value.value());
        mOut << "  " << code.name << " "
             << std::string(number.size() < 9 ? 9 - number.size() : 0, ' ') << number << "  "
             << code.meaning << "\n";
    }
    mOut.flush();
    return kOk;
}

int VessaCtl::profiles(const Args&) {
    client::Result<int> count = mClient.profileCount();
    if (!count) return fail(count.error());
    int selected = mClient.selectedProfile().valueOr(-1);
    for (int id = 0; id < count.value(); ++id) {
        bool modified = mClient.profileModified(id).valueOr(false);
        mOut << (id == selected ? "* " : "  ") << profileText(id)
             << (modified ? "  (modified)" : "") << "\n";
    }
    mOut.flush();
    return kOk;
}

int VessaCtl::onOff(bool on) {
    if (client::Result<void> done = mClient.setEffectEnabled(on); !done) return fail(done.error());
    client::Result<bool> now = mClient.effectEnabled();
    if (!now) return fail(now.error());
    mOut << "effect " << (now.value() ? "on" : "off") << std::endl;
    return now.value() == on ? kOk : fail("the effect did not switch");
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
    if (client::Result<void> done = mClient.selectProfile(profile); !done) {
        return fail(done.error());
    }
    int selected = mClient.selectedProfile().valueOr(-1);
    mOut << "profile " << profileText(selected) << std::endl;
    return selected == profile ? kOk : fail("the profile was not selected");
}

int VessaCtl::resetProfile(const Args& args) {
    int profile = 0;
    if (!parseProfile(args[0], &profile)) return kUsage;
    if (client::Result<void> done = mClient.resetProfile(profile); !done) {
        return fail(done.error());
    }
    mOut << "profile " << profileText(profile) << " reset" << std::endl;
    return kOk;
}

int VessaCtl::printParameter(int profile, int port, int id) {
    client::Result<std::vector<int32_t>> values =
            port < 0 ? mClient.setting(profile, id) : mClient.portSetting(profile, port, id);
    if (!values) return fail(values.error());
    mOut << id << " " << Client::findSetting(id)->name;
    if (port >= 0) mOut << " (" << Client::describePort(port) << ")";
    mOut << ": " << Client::describeValues(values.value()) << std::endl;
    return kOk;
}

int VessaCtl::setParameter(int profile, int port, int id, const Args& texts) {
    const Setting* info = Client::findSetting(id);
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
    client::Result<std::vector<int32_t>> stored =
            port < 0 ? mClient.setSetting(profile, id, values)
                     : mClient.setPortSetting(profile, port, id, values);
    if (!stored) return fail(stored.error());
    mOut << id << " " << info->name;
    if (port >= 0) mOut << " (" << Client::describePort(port) << ")";
    mOut << ": " << Client::describeValues(stored.value()) << std::endl;
    return kOk;
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
    client::Result<std::vector<std::string>> names = mClient.tuningDevices(port);
    if (!names) return fail(names.error());
    std::string selected = mClient.selectedTuningDevice(port).valueOr("");
    mOut << Client::describePort(port) << ":\n";
    for (const std::string& name : names.value()) {
        mOut << (name == selected ? "* " : "  ") << name << "\n";
    }
    if (names.value().empty()) mOut << "  (no tuning devices)\n";
    mOut.flush();
    return kOk;
}

int VessaCtl::selectDevice(const Args& args) {
    int port = 0;
    if (!parsePort(args[0], &port)) return kUsage;
    if (client::Result<void> done = mClient.selectTuningDevice(port, args[1]); !done) {
        return fail(done.error());
    }
    mOut << Client::describePort(port) << ": " << args[1] << std::endl;
    return kOk;
}

int VessaCtl::reload(const Args&) {
    if (client::Result<void> done = mClient.reloadTuning(); !done) return fail(done.error());
    mOut << "tuning reloaded" << std::endl;
    return kOk;
}

int VessaCtl::dump(const Args&) {
    client::Result<std::string> text = mClient.dump();
    if (!text) return fail(text.error());
    mOut << text.value();
    mOut.flush();
    return kOk;
}

int VessaCtl::watch(const Args& args) {
    const bool follow = !args.empty() && args[0] == "--follow";
    if (!args.empty() && !follow) return usage("usage: vessactl watch [--follow]");
    // Blocked before registering starts the bus thread, so only the wait below takes them.
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    sigprocmask(SIG_BLOCK, &stop, nullptr);
    client::Result<void> listening = mClient.listen(
            [this](const Update& update) { mOut << Client::describe(update) << std::endl; });
    if (!listening) return fail(listening.error());
    mErr << "vessactl: watching as client type " << mIdentity.type << ", uid " << mIdentity.uid
         << " (Ctrl-C stops)" << std::endl;
    int result = kOk;
    bool away = false;
    // The presence of the service and the bus is looked at ten times a second.
    const timespec tick = {0, 100 * 1000 * 1000};
    while (sigtimedwait(&stop, nullptr, &tick) < 0) {
        std::string lost = mClient.busLost();
        if (!lost.empty()) {
            result = fail("lost " + Client::describeBus(mBus) + ": " + lost);
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
            if (client::Result<void> again = mClient.registerAgain(); !again) {
                result = fail(again.error());
                break;
            }
            mErr << "vessactl: the vessa service is back; registered again" << std::endl;
        }
    }
    mClient.listen(nullptr);
    return result;
}

int VessaCtl::store(const Args& args) {
    bool pending = !args.empty() && args[0] == "--pending";
    if (!args.empty() && !pending) return usage("usage: vessactl store [--pending]");
    client::Result<std::vector<client::StoredParam>> entries = mClient.storedParams(!pending);
    if (!entries) return fail(entries.error());
    char device[16];
    for (const client::StoredParam& entry : entries.value()) {
        snprintf(device, sizeof(device), "0x%x", entry.device);
        mOut << device << " " << entry.code << " " << Client::describeValues(entry.values) << "\n";
    }
    mOut.flush();
    return kOk;
}

}  // namespace vessa
