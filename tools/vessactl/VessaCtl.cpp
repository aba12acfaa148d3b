#include "VessaCtl.h"

#include <signal.h>
#include <sys/time.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>

#include "Suggest.h"

namespace vessa {

using client::Client;
using client::Error;
using client::IntCodeInfo;
using client::Setting;
using client::Update;
using json = nlohmann::ordered_json;

namespace {

constexpr uint32_t kDefaultDevice = 0x40000000;

std::string lowered(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string padded(const std::string& text, size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

// "2026-11-23T08:20:01.123", local time.
std::string now() {
    timeval tv{};
    gettimeofday(&tv, nullptr);
    tm local{};
    localtime_r(&tv.tv_sec, &local);
    char text[32];
    size_t n = strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &local);
    snprintf(text + n, sizeof(text) - n, ".%03ld", static_cast<long>(tv.tv_usec / 1000));
    return text;
}

const char* kindName(Update::Kind kind) {
    switch (kind) {
        case Update::Kind::EFFECT_SWITCHED:
            return "effect-switched";
        case Update::Kind::SETTING_CHANGED:
            return "setting-changed";
        case Update::Kind::PORT_SETTING_CHANGED:
            return "port-setting-changed";
        case Update::Kind::PROFILE_SELECTED:
            return "profile-selected";
        case Update::Kind::PROFILE_RESET:
            return "profile-reset";
        case Update::Kind::OTHER_COMMAND:
            return "other-command";
        case Update::Kind::TUNING_SELECTED:
            return "tuning-selected";
        case Update::Kind::CLIENTS_CHANGED:
            return "clients-changed";
        case Update::Kind::TUNING_RELOADED:
            return "tuning-reloaded";
        case Update::Kind::UNKNOWN:
            break;
    }
    return "unknown";
}

json settingJson(int id) {
    const Setting* setting = Client::findSetting(id);
    return {{"id", id}, {"name", setting != nullptr ? setting->name : nullptr}};
}

json portJson(int port) {
    if (port < 0) return nullptr;
    return {{"id", port}, {"name", Client::portName(port)}};
}

json updateJson(const Update& update) {
    json line = {{"time", now()}, {"kind", kindName(update.kind)}};
    switch (update.kind) {
        case Update::Kind::EFFECT_SWITCHED:
            line["on"] = update.on;
            break;
        case Update::Kind::SETTING_CHANGED:
        case Update::Kind::PORT_SETTING_CHANGED:
            line["profile"] = update.profile;
            line["port"] = portJson(update.port);
            line["setting"] = settingJson(update.id);
            line["values"] = update.values;
            break;
        case Update::Kind::PROFILE_SELECTED:
        case Update::Kind::PROFILE_RESET:
            line["profile"] = update.profile;
            break;
        case Update::Kind::OTHER_COMMAND:
            line["command"] = update.command;
            break;
        case Update::Kind::TUNING_SELECTED:
            line["tuning"] = update.tuning;
            break;
        case Update::Kind::UNKNOWN:
            line["bytes"] = update.bytes;
            break;
        default:
            break;
    }
    return line;
}

}  // namespace

VessaCtl::VessaCtl(Client& client, const Invocation& invocation, std::ostream& out,
                   std::ostream& err)
    : mClient(client), mInvocation(invocation), mOut(out), mErr(err) {}

int VessaCtl::run() {
    const std::string& c = mInvocation.command;
    int status = c == "status"     ? this->status()
                 : c == "profiles" ? profiles()
                 : c == "on"       ? switchEffect(true)
                 : c == "off"      ? switchEffect(false)
                 : c == "profile"  ? selectProfile()
                 : c == "reset"    ? resetProfile()
                 : c == "get"      ? get(false)
                 : c == "port-get" ? get(true)
                 : c == "set"      ? set(false)
                 : c == "port-set" ? set(true)
                 : c == "devices"  ? devices()
                 : c == "select"   ? selectDevice()
                 : c == "reload"   ? reload()
                 : c == "dump"     ? dump()
                 : c == "watch"    ? watch()
                 : c == "store"    ? store()
                                   : usage("unknown command '" + c + "'");
    // An error here means the service or the bus went away, or the bus's policy keeps
    // this user from leaving; either way the service drops the client with its connection.
    mClient.unregister();
    return status;
}

// ---- output and errors ----

void VessaCtl::print(const json& document) {
    mOut << document.dump(2) << std::endl;
}

int VessaCtl::fail(const std::string& message) {
    mErr << "vessactl: " << message << std::endl;
    return mStatus = CommandLine::kFailed;
}

int VessaCtl::fail(const Error& error) {
    return fail(error.message);
}

int VessaCtl::usage(const std::string& message) {
    mErr << "vessactl: " << message << "; see vessactl " << mInvocation.command << " --help"
         << std::endl;
    return mStatus = CommandLine::kUsage;
}

// ---- names and numbers ----

bool VessaCtl::parseDecimal(const std::string& text, long min, long max, long* out) {
    size_t digits = text.size() > 1 && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    if (digits == text.size() ||
        text.find_first_not_of("0123456789", digits) != std::string::npos) {
        return false;
    }
    errno = 0;
    long value = std::strtol(text.c_str(), nullptr, 10);
    if (errno != 0 || value < min || value > max) return false;
    *out = value;
    return true;
}

std::vector<std::string> VessaCtl::profileNames() {
    std::vector<std::string> names;
    const int count = mClient.profileCount().valueOr(0);
    for (int id = 0; id < count; ++id) names.push_back(mClient.profileName(id).valueOr(""));
    return names;
}

bool VessaCtl::resolveProfile(int* profile) {
    const std::string& text = mInvocation.arg("PROFILE");
    client::Result<int> count = mClient.profileCount();
    if (!count) return fail(count.error()), false;
    long number = 0;
    if (parseDecimal(text, INT32_MIN, INT32_MAX, &number)) {
        if (number < 0 || number >= count.value()) {
            fail("profile " + std::to_string(number) +
                 " does not exist: the service has profiles 0 to " +
                 std::to_string(count.value() - 1) + " (vessactl profiles lists them)");
            return false;
        }
        *profile = static_cast<int>(number);
        return true;
    }
    const std::vector<std::string> names = profileNames();
    for (size_t id = 0; id < names.size(); ++id) {
        if (lowered(names[id]) == lowered(text)) {
            *profile = static_cast<int>(id);
            return true;
        }
    }
    usage("no profile is named '" + text + "'" + Suggest::hint(text, names));
    return false;
}

bool VessaCtl::resolveSetting(const Setting** setting) {
    const std::string& text = mInvocation.arg("SETTING");
    long id = 0;
    *setting = parseDecimal(text, INT32_MIN, INT32_MAX, &id)
                       ? Client::findSetting(static_cast<int>(id))
                       : Client::findSetting(lowered(text));
    if (*setting != nullptr) return true;
    std::vector<std::string> names;
    for (const Setting& s : Client::settings()) names.push_back(s.name);
    usage(std::string("no setting is ") + (id != 0 ? "numbered" : "named") + " '" + text + "'" +
          Suggest::hint(text, names) + "; the settings are 101 to 116");
    return false;
}

bool VessaCtl::resolvePort(int* port) {
    const std::string& text = mInvocation.arg("PORT");
    long number = 0;
    *port = parseDecimal(text, 0, Client::kNumPorts - 1, &number) ? static_cast<int>(number)
                                                                  : Client::findPort(lowered(text));
    if (*port >= 0) return true;
    std::vector<std::string> names;
    for (int p = 0; p < Client::kNumPorts; ++p) names.push_back(Client::portName(p));
    usage("no port is '" + text + "'" + Suggest::hint(text, names) + "; the ports are 0 to " +
          std::to_string(Client::kNumPorts - 1) + " or their names");
    return false;
}

std::string VessaCtl::profileText(int profile) {
    return std::to_string(profile) + " " + mClient.profileName(profile).valueOr("");
}

std::string VessaCtl::settingText(const Setting& setting, int port) {
    std::string text = std::to_string(setting.id) + " " + setting.name;
    if (port >= 0) text += " (" + Client::describePort(port) + ")";
    return text;
}

// ---- status and profiles ----

std::string VessaCtl::intParamText(const IntCodeInfo& code, int64_t value) {
    using Reading = IntCodeInfo::Reading;
    switch (code.reading) {
        case Reading::FLAG:
            return value != 0 ? "yes" : "no";
        case Reading::NUMBER:
            return value == -1 ? "none" : std::to_string(value);
        case Reading::DEVICE:
            return value < 0 ? "none" : Client::describeDevice(static_cast<uint32_t>(value));
        case Reading::VERSION:
            return value < 0 ? "none"
                             : std::to_string(value / 1000000) + "." +
                                       std::to_string(value / 1000 % 1000) + "." +
                                       std::to_string(value % 1000);
        case Reading::UPTIME_MS:
            return value == -1000 ? "never" : std::to_string(value) + " ms after boot";
        case Reading::CLIENT_TYPE:
            return value == -1 ? "none" : "type " + std::to_string(value);
    }
    return std::to_string(value);
}

int VessaCtl::status() {
    client::Result<bool> on = mClient.effectEnabled();
    if (!on) return fail(on.error());
    const int selected = mClient.selectedProfile().valueOr(-1);
    const int count = mClient.profileCount().valueOr(0);
    const std::string saveError = mClient.saveError().valueOr("");
    json integers = json::array();
    std::string lines;
    for (const IntCodeInfo& code : Client::intCodes()) {
        client::Result<int64_t> value = mClient.intParam(code.code);
        if (!value) return fail(value.error());
        const std::string text = intParamText(code, value.value());
        integers.push_back({{"code", code.name},
                            {"value", value.value()},
                            {"text", text},
                            {"meaning", code.meaning}});
        lines += std::string("  ") + code.name + "  " + padded(text, 18) + code.meaning + "\n";
    }
    if (mInvocation.json) {
        print({{"effect", on.value()},
               {"profile", {{"id", selected}, {"name", mClient.profileName(selected).valueOr("")}}},
               {"profileCount", count},
               {"saveError", saveError.empty() ? json(nullptr) : json(saveError)},
               {"integers", integers}});
        return CommandLine::kOk;
    }
    if (!saveError.empty()) mOut << "warning: settings not saved: " << saveError << "\n";
    mOut << "effect   " << (on.value() ? "on" : "off") << "\n"
         << "profile  " << profileText(selected) << " (" << count << " profiles)\n"
         << "integer parameters:\n"
         << lines << std::flush;
    return CommandLine::kOk;
}

int VessaCtl::profiles() {
    client::Result<int> count = mClient.profileCount();
    if (!count) return fail(count.error());
    const int selected = mClient.selectedProfile().valueOr(-1);
    json list = json::array();
    for (int id = 0; id < count.value(); ++id) {
        const bool modified = mClient.profileModified(id).valueOr(false);
        const std::string name = mClient.profileName(id).valueOr("");
        list.push_back(
                {{"id", id}, {"name", name}, {"selected", id == selected}, {"modified", modified}});
        if (!mInvocation.json) {
            mOut << (id == selected ? "* " : "  ") << id << " " << name
                 << (modified ? "  (modified)" : "") << "\n";
        }
    }
    if (mInvocation.json) print({{"selected", selected}, {"profiles", list}});
    mOut.flush();
    return CommandLine::kOk;
}

// ---- changes that are not settings ----

int VessaCtl::switchEffect(bool on) {
    if (client::Result<void> done = mClient.setEffectEnabled(on); !done) return fail(done.error());
    client::Result<bool> now = mClient.effectEnabled();
    if (!now) return fail(now.error());
    mOut << "effect " << (now.value() ? "on" : "off") << std::endl;
    return now.value() == on ? CommandLine::kOk : fail("the effect did not switch");
}

int VessaCtl::selectProfile() {
    int profile = 0;
    if (!resolveProfile(&profile)) return mStatus;
    if (client::Result<void> done = mClient.selectProfile(profile); !done) {
        return fail(done.error());
    }
    const int selected = mClient.selectedProfile().valueOr(-1);
    mOut << "profile " << profileText(selected) << std::endl;
    return selected == profile ? CommandLine::kOk : fail("the service kept its profile");
}

int VessaCtl::resetProfile() {
    int profile = 0;
    if (!resolveProfile(&profile)) return mStatus;
    if (client::Result<void> done = mClient.resetProfile(profile); !done) {
        return fail(done.error());
    }
    mOut << "profile " << profileText(profile) << " reset" << std::endl;
    return CommandLine::kOk;
}

// ---- settings ----

std::vector<int32_t> VessaCtl::geqFrequencies() {
    client::Result<std::vector<client::StoredParam>> entries = mClient.storedParams(true);
    if (!entries) return {};
    for (const client::StoredParam& entry : entries.value()) {
        // The band count, then one frequency per band.
        if (entry.device == kDefaultDevice && entry.code == "GEBS" && !entry.values.empty() &&
            entry.values[0] >= 0 && static_cast<size_t>(entry.values[0]) < entry.values.size()) {
            return {entry.values.begin() + 1, entry.values.begin() + 1 + entry.values[0]};
        }
    }
    return {};
}

int VessaCtl::get(bool onePort) {
    int profile = 0, port = -1;
    const Setting* setting = nullptr;
    if (!resolveSetting(&setting) || (onePort && !resolvePort(&port)) ||
        !resolveProfile(&profile)) {
        return mStatus;
    }
    client::Result<std::vector<int32_t>> values =
            port < 0 ? mClient.setting(profile, setting->id)
                     : mClient.portSetting(profile, port, setting->id);
    if (!values) return fail(values.error());
    // The graphic EQ's band frequencies are in the effect's store, one per gain.
    std::vector<int32_t> bands;
    if (setting->level == Setting::Level::GEQ) bands = geqFrequencies();
    if (bands.size() != values.value().size()) bands.clear();
    if (mInvocation.json) {
        json document = {
                {"profile", {{"id", profile}, {"name", mClient.profileName(profile).valueOr("")}}},
                {"port", portJson(port)},
                {"setting", settingJson(setting->id)},
                {"values", values.value()}};
        if (!bands.empty()) document["frequencies"] = bands;
        print(document);
        return CommandLine::kOk;
    }
    mOut << settingText(*setting, port) << ":";
    if (bands.empty()) {
        mOut << " " << Client::describeValues(values.value()) << "\n";
    } else {
        mOut << "\n";
        for (size_t i = 0; i < bands.size(); ++i) {
            mOut << "  " << padded(std::to_string(bands[i]) + " Hz", 10) << values.value()[i]
                 << "\n";
        }
    }
    mOut.flush();
    return CommandLine::kOk;
}

std::string VessaCtl::refusal(const Setting& setting, int port,
                              const std::vector<int32_t>& requested,
                              const std::vector<int32_t>& stored) {
    const std::string range = std::to_string(setting.min) + ".." + std::to_string(setting.max);
    // Only per-endpoint settings can be set for one port; the service ignores the rest.
    if (port >= 0 && setting.level != Setting::Level::ENDPOINT) {
        const char* fixed = Client::settingEndpoint(setting.id);
        return std::string(setting.name) +
               (fixed != nullptr ? " applies to the " + std::string(fixed) + " endpoint only"
                                 : std::string(" is one value for the whole profile")) +
               " and cannot be set for one port; use: vessactl set PROFILE " + setting.name +
               " VALUE";
    }
    std::vector<int32_t> clamped = requested;
    for (int32_t& v : clamped) v = std::clamp<int32_t>(v, setting.min, setting.max);
    if (clamped != requested && !setting.clamped) {
        return std::string(setting.name) + " takes " + range +
               " and the service ignores other values";
    }
    if (setting.clamped && stored == clamped) return "";
    return "the service kept " + Client::describeValues(stored);
}

int VessaCtl::set(bool onePort) {
    int profile = 0, port = -1;
    const Setting* setting = nullptr;
    if (!resolveSetting(&setting) || (onePort && !resolvePort(&port)) ||
        !resolveProfile(&profile)) {
        return mStatus;
    }
    const std::vector<std::string>& texts = mInvocation.values;
    if (texts.size() != static_cast<size_t>(setting->length)) {
        return usage(std::string(setting->name) + " takes " + std::to_string(setting->length) +
                     " value(s), not " + std::to_string(texts.size()));
    }
    std::vector<int32_t> requested;
    for (const std::string& text : texts) {
        long value = 0;
        if (!parseDecimal(text, INT32_MIN, INT32_MAX, &value)) {
            return usage("'" + text + "' is not a decimal number");
        }
        requested.push_back(static_cast<int32_t>(value));
    }
    client::Result<std::vector<int32_t>> stored =
            port < 0 ? mClient.setSetting(profile, setting->id, requested)
                     : mClient.setPortSetting(profile, port, setting->id, requested);
    if (!stored) return fail(stored.error());
    const bool exact = stored.value() == requested;
    const bool outside = std::any_of(requested.begin(), requested.end(), [&](int32_t v) {
        return v < setting->min || v > setting->max;
    });
    const std::string reason = exact ? "" : refusal(*setting, port, requested, stored.value());
    const std::string range = std::to_string(setting->min) + ".." + std::to_string(setting->max);
    const char* outcome = exact ? "stored" : reason.empty() ? "clamped" : "refused";
    if (mInvocation.json) {
        json document = {
                {"profile", {{"id", profile}, {"name", mClient.profileName(profile).valueOr("")}}},
                {"port", portJson(port)},
                {"setting", settingJson(setting->id)},
                {"requested", requested},
                {"stored", stored.value()},
                {"outcome", outcome},
                {"range", {setting->min, setting->max}}};
        if (!reason.empty()) document["reason"] = reason;
        print(document);
    } else {
        mOut << settingText(*setting, port) << ": " << Client::describeValues(stored.value());
        if (!exact && reason.empty()) {
            mOut << " (clamped to " << range << " from " << Client::describeValues(requested)
                 << ")";
        } else if (!exact) {
            mOut << " (unchanged)";
        } else if (outside) {
            mOut << " (outside " << range << ": stored as given, this setting is not clamped)";
        }
        mOut << std::endl;
    }
    if (reason.empty()) return CommandLine::kOk;
    return fail("not stored: " + reason);
}

// ---- tuning devices ----

int VessaCtl::devices() {
    int port = 0;
    if (!resolvePort(&port)) return mStatus;
    client::Result<std::vector<std::string>> names = mClient.tuningDevices(port);
    if (!names) return fail(names.error());
    const std::string selected = mClient.selectedTuningDevice(port).valueOr("");
    if (mInvocation.json) {
        print({{"port", portJson(port)}, {"selected", selected}, {"devices", names.value()}});
        return CommandLine::kOk;
    }
    mOut << Client::describePort(port) << ":\n";
    for (const std::string& name : names.value()) {
        mOut << (name == selected ? "* " : "  ") << name << "\n";
    }
    if (names.value().empty()) mOut << "  (no tuning devices)\n";
    mOut.flush();
    return CommandLine::kOk;
}

int VessaCtl::selectDevice() {
    int port = 0;
    if (!resolvePort(&port)) return mStatus;
    const std::string& name = mInvocation.arg("DEVICE");
    if (client::Result<void> done = mClient.selectTuningDevice(port, name); !done) {
        std::string hint;
        if (done.error().code == Error::Code::REFUSED) {
            hint = Suggest::hint(name, mClient.tuningDevices(port).valueOr({}));
        }
        return fail(done.error().message + hint);
    }
    mOut << Client::describePort(port) << ": " << name << std::endl;
    return CommandLine::kOk;
}

int VessaCtl::reload() {
    if (client::Result<void> done = mClient.reloadTuning(); !done) return fail(done.error());
    mOut << "tuning reloaded" << std::endl;
    return CommandLine::kOk;
}

int VessaCtl::dump() {
    client::Result<std::string> text = mClient.dump();
    if (!text) return fail(text.error());
    if (mInvocation.json) {
        print({{"text", text.value()}});
    } else {
        mOut << text.value() << std::flush;
    }
    return CommandLine::kOk;
}

// ---- updates ----

int VessaCtl::watch() {
    const bool follow = mInvocation.has("--follow");
    const bool all = mInvocation.has("--all");
    // Blocked before registering starts the bus thread, so only the wait below takes them.
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    sigprocmask(SIG_BLOCK, &stop, nullptr);
    client::Result<void> listening = mClient.listen([this, all](const Update& update) {
        if (update.kind == Update::Kind::CLIENTS_CHANGED && !all) return;
        if (mInvocation.json) {
            mOut << updateJson(update).dump() << std::endl;
        } else {
            mOut << now() << "  " << Client::describe(update) << std::endl;
        }
    });
    if (!listening) return fail(listening.error());
    mErr << "vessactl: watching " << Client::describeBus(mInvocation.bus) << " (Ctrl-C stops)"
         << std::endl;
    bool away = false;
    // The presence of the service and the bus is looked at ten times a second.
    const timespec tick = {0, 100 * 1000 * 1000};
    while (sigtimedwait(&stop, nullptr, &tick) < 0) {
        const std::string lost = mClient.busLost();
        if (!lost.empty()) {
            fail("lost " + Client::describeBus(mInvocation.bus) + ": " + lost);
            break;
        }
        if (!mClient.serviceRunning() && !away) {
            if (!follow) {
                fail("the vessa service left " + Client::describeBus(mInvocation.bus));
                break;
            }
            away = true;
            mErr << "vessactl: the vessa service left; waiting for it to come back" << std::endl;
        } else if (mClient.serviceRunning() && away) {
            away = false;
            if (client::Result<void> again = mClient.registerAgain(); !again) {
                fail(again.error());
                break;
            }
            mErr << "vessactl: the vessa service is back; registered again" << std::endl;
        }
    }
    mClient.listen(nullptr);
    return mStatus;
}

// ---- the effect's store ----

int VessaCtl::store() {
    const bool committed = !mInvocation.has("--pending");
    client::Result<std::vector<client::StoredParam>> entries = mClient.storedParams(committed);
    if (!entries) return fail(entries.error());
    if (mInvocation.json) {
        json list = json::array();
        for (const client::StoredParam& entry : entries.value()) {
            list.push_back({{"device", entry.device},
                            {"deviceName", Client::describeDevice(entry.device)},
                            {"code", entry.code},
                            {"values", entry.values}});
        }
        print({{"committed", committed}, {"entries", list}});
        return CommandLine::kOk;
    }
    char device[16];
    if (mInvocation.has("--raw")) {
        for (const client::StoredParam& entry : entries.value()) {
            snprintf(device, sizeof(device), "0x%x", entry.device);
            mOut << device << " " << entry.code << " " << Client::describeValues(entry.values)
                 << "\n";
        }
        mOut.flush();
        return CommandLine::kOk;
    }
    // Entries come sorted by device: one heading per device, its codes under it.
    uint32_t current = 0;
    bool first = true;
    for (const client::StoredParam& entry : entries.value()) {
        if (first || entry.device != current) {
            snprintf(device, sizeof(device), "0x%x", entry.device);
            mOut << (first ? "" : "\n") << Client::describeDevice(entry.device) << " (" << device
                 << "):\n";
            current = entry.device;
            first = false;
        }
        mOut << "  " << entry.code << "  " << Client::describeValues(entry.values) << "\n";
    }
    if (first) mOut << "(the store is empty)\n";
    mOut.flush();
    return CommandLine::kOk;
}

}  // namespace vessa
