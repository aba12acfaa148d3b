#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <sstream>

#include "Suggest.h"
#include "vessa/Client.h"

namespace vessa {

using client::Client;
using client::Setting;

namespace {

constexpr const char* kProfile = "PROFILE";
constexpr const char* kSetting = "SETTING";
constexpr const char* kPort = "PORT";
const CommandLine::Positional kProfileArg = {kProfile, "a profile, by name or number", false};
const CommandLine::Positional kSettingArg = {kSetting, "a setting, by name or id (101 to 116)",
                                             false};
const CommandLine::Positional kPortArg = {kPort, "an output port, by name or number", false};
const CommandLine::Positional kValuesArg = {"VALUE", "the value(s); decimal", true};

constexpr const char* kBusVariable = "VESSA_BUS";

// What --json prints, command by command; kept stable for scripts.
constexpr const char* kJsonSchema =
        "status: {effect: bool, profile: {id, name}, profileCount, saveError: string|null, "
        "integers: [{code, value, text, meaning}]}\n"
        "profiles: {selected, profiles: [{id, name, selected: bool, modified: bool}]}\n"
        "get, port-get: {profile: {id, name}, port: {id, name}|null, setting: {id, name}, "
        "values: [int], frequencies: [Hz] (geq-gains only)}\n"
        "set, port-set: {profile, port, setting, requested: [int], stored: [int], "
        "outcome: \"stored\"|\"clamped\"|\"refused\", range: [min, max], reason (refused only)}\n"
        "devices: {port: {id, name}, selected, devices: [name]}\n"
        "store: {committed: bool, entries: [{device, deviceName, code, values: [int]}]}\n"
        "dump: {text}\n"
        "watch: one object per line: {time, kind, ...}; kind is effect-switched (on), "
        "setting-changed and port-setting-changed (profile, port, setting, values), "
        "profile-selected and profile-reset (profile), tuning-selected (tuning), "
        "tuning-reloaded, clients-changed (with --all), other-command (command), unknown (bytes)";

std::string padded(const std::string& text, size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

std::string syntax(const CommandLine::Command& command) {
    std::string text = command.name;
    for (const CommandLine::Flag& flag : command.flags) text += std::string(" [") + flag.name + "]";
    for (const CommandLine::Positional& p : command.positionals) {
        text += std::string(" ") + p.name + (p.many ? "..." : "");
    }
    return text;
}

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const CommandLine::Command& command : CommandLine::commands()) {
        names.push_back(command.name);
    }
    return names;
}

}  // namespace

const std::vector<CommandLine::Option>& CommandLine::options() {
    static const std::vector<Option> kOptions = {
            {"--bus", "BUS",
             "session (the default), system, or a D-Bus address such as unix:path=/run/bus; "
             "the default comes from VESSA_BUS when it is set"},
            {"--type", "N",
             "register as client type N: 1-4 a decoder, 7 the game client, else "
             "an ordinary client (0)"},
            {"--uid", "N", "register with uid N (default: the process id)"},
            {"--json", nullptr,
             "machine-readable output: one JSON document, or JSON lines for watch"},
    };
    return kOptions;
}

const std::vector<CommandLine::Command>& CommandLine::commands() {
    // clang-format off
    static const std::vector<Command> kCommands = {
        {"status", "effect on/off, selected profile, every integer parameter decoded", {}, {},
         "vessactl status\nvessactl status --json"},
        {"profiles", "the profiles; * marks the selected one", {}, {}, "vessactl profiles"},
        {"on", "switch processing on (saved at once)", {}, {}, "vessactl on"},
        {"off", "switch processing off (saved at once)", {}, {}, "vessactl off"},
        {"profile", "select a profile (saved at once)", {kProfileArg}, {},
         "vessactl profile Music\nvessactl profile 2"},
        {"reset", "reset a profile to its tuning defaults", {kProfileArg}, {},
         "vessactl reset Music"},
        {"get", "read a setting of a profile (the speaker endpoint's, for per-endpoint ones)",
         {kProfileArg, kSettingArg}, {}, "vessactl get Music ieq-amount\nvessactl get 2 geq-gains"},
        {"set", "write a setting of a profile, for every endpoint; prints what was stored",
         {kProfileArg, kSettingArg, kValuesArg}, {},
         "vessactl set Music ieq-amount 12\nvessactl set 2 dialog-enhancer 1"},
        {"port-get", "read a setting for the endpoint of one port",
         {kProfileArg, kPortArg, kSettingArg}, {}, "vessactl port-get Music headphone ieq-amount"},
        {"port-set", "write a setting for the endpoint of one port; prints what was stored",
         {kProfileArg, kPortArg, kSettingArg, kValuesArg}, {},
         "vessactl port-set Music headphone headphone-virtualizer 1"},
        {"devices", "the tuning devices of a port; * marks the selected one", {kPortArg}, {},
         "vessactl devices bluetooth"},
        {"select", "use a tuning device on a port",
         {kPortArg, {"DEVICE", "a tuning device of the port (see devices)", false}}, {},
         "vessactl select bluetooth bt_earbuds_a"},
        {"reload", "re-read the OEM tuning file", {}, {}, "vessactl reload"},
        {"dump", "the service's diagnostic text", {}, {}, "vessactl dump"},
        {"watch", "print every update, time-stamped, until Ctrl-C; exit 1 if the service goes",
         {}, {{"--follow", "wait for the service to come back and register again"},
              {"--all", "also show clients registering and leaving"}},
         "vessactl watch\nvessactl watch --follow --json"},
        {"store", "the effect's parameter store, grouped by output device", {},
         {{"--pending", "the entries not committed yet"},
          {"--raw", "one line per entry: DEVICE CODE VALUES, as numbers"}},
         "vessactl store\nvessactl store --raw"},
    };
    // clang-format on
    return kCommands;
}

const CommandLine::Command* CommandLine::findCommand(const std::string& name) {
    for (const Command& command : commands()) {
        if (name == command.name) return &command;
    }
    return nullptr;
}

std::string CommandLine::footer() {
    std::ostringstream text;
    std::string unclamped;
    for (const Setting& s : Client::settings()) {
        if (!s.clamped) unclamped += (unclamped.empty() ? "" : " and ") + std::to_string(s.id);
    }
    text << "Settings (SETTING, a name or an id) and their ranges; the service clamps other\n"
         << "values, but stores " << unclamped << " as given:\n";
    for (const Setting& s : Client::settings()) {
        std::string range = std::to_string(s.min) + ".." + std::to_string(s.max);
        if (s.length > 1) range += " (" + std::to_string(s.length) + " values)";
        text << "  " << s.id << "  " << padded(s.name, 26) << padded(range, 22) << s.help << "\n";
    }
    text << "\nPorts (PORT, a name or a number):";
    for (int port = 0; port < Client::kNumPorts; ++port) {
        text << " " << port << " " << Client::portName(port);
    }
    text << "\n\nExit status: 0 done; 1 refused or failed (the reason is printed); 2 usage error.\n"
            "Changes wait until the service has applied them.";
    return text.str();
}

int CommandLine::parse(int argc, const char* const* argv, Invocation* invocation, std::ostream& out,
                       std::ostream& err) {
    // The first word that is neither an option nor an option's value names the command.
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.rfind("-", 0) == 0) {
            for (const Option& option : options()) {
                i += option.value != nullptr && word == option.name ? 1 : 0;
            }
            continue;
        }
        if (findCommand(word) == nullptr) {
            err << "vessactl: unknown command '" << word << "'"
                << Suggest::hint(word, commandNames()) << "; see vessactl --help\n";
            return kUsage;
        }
        break;
    }

    CLI::App app("Reads and changes the settings of the vessa audio service (vessad) over D-Bus.",
                 "vessactl");
    app.set_version_flag("--version", std::string("vessactl ") + VESSA_VERSION);
    app.require_subcommand(1);
    app.fallthrough();  // options are taken after the command too
    app.footer(footer());
    std::map<std::string, std::string*> values = {{"--bus", &invocation->bus},
                                                  {"--type", &invocation->type},
                                                  {"--uid", &invocation->uid}};
    for (const Option& option : options()) {
        if (option.value == nullptr) {
            app.add_flag(option.name, invocation->json, option.help);
            continue;
        }
        CLI::Option* added = app.add_option(option.name, *values.at(option.name), option.help);
        added->type_name(option.value);
        if (std::string(option.name) == "--bus") added->envname(kBusVariable);
    }
    for (const Command& command : commands()) {
        CLI::App* sub = app.add_subcommand(command.name, command.help);
        std::string examples = "Examples:\n";
        std::istringstream lines(command.examples);
        for (std::string line; std::getline(lines, line);) examples += "  " + line + "\n";
        sub->footer(examples);
        for (const Positional& p : command.positionals) {
            CLI::Option* option =
                    p.many ? sub->add_option(p.name, invocation->values, p.help)
                           : sub->add_option(p.name, invocation->args[p.name], p.help);
            option->required();
        }
        for (const Flag& flag : command.flags) {
            sub->add_flag_callback(
                    flag.name, [invocation, &flag] { invocation->flags.insert(flag.name); },
                    flag.help);
        }
        sub->callback([invocation, &command] { invocation->command = command.name; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int status = app.exit(e, out, err);
        return status == 0 ? kOk : kUsage;
    }
    return kContinue;
}

std::string CommandLine::roff(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    // A line must not start with a control character.
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out = "\\&" + out;
    return out;
}

std::string CommandLine::manPage() {
    std::ostringstream man;
    man << ".TH VESSACTL 1 \"\" \"vessa " << VESSA_VERSION << "\" \"User Commands\"\n"
        << ".SH NAME\nvessactl \\- read and change the settings of the vessa audio service\n"
        << ".SH SYNOPSIS\n.B vessactl\n.RI [ OPTIONS ] \" COMMAND \" [ ARGS ]\n"
        << ".SH DESCRIPTION\n"
        << "Talks to\n.BR vessad (8)\nover D\\-Bus. Profiles, settings and ports are given by "
           "name or by number; numbers are decimal. Every change waits until the service has "
           "applied it, and prints what was stored: a value the service clamped is shown with "
           "its range, and one it refused or ignored is reported with the reason and exit "
           "status 1. Options may come before or after the command.\n"
        << ".SH COMMANDS\n";
    for (const Command& command : commands()) {
        man << ".TP\n.B " << roff(syntax(command)) << "\n" << roff(command.help) << ".\n";
        for (const Flag& flag : command.flags) {
            man << ".RS\n.TP\n.B " << roff(flag.name) << "\n" << roff(flag.help) << "\n.RE\n";
        }
    }
    man << ".SH OPTIONS\n";
    for (const Option& option : options()) {
        man << ".TP\n.B " << roff(option.name);
        if (option.value != nullptr) man << " \" " << option.value << "\"";
        man << "\n" << roff(option.help) << "\n";
    }
    man << ".TP\n.B \\-\\-help\nThe usage, of vessactl or of one command with its examples.\n"
        << ".TP\n.B \\-\\-version\nThe version.\n";
    man << ".SH SETTINGS\n";
    for (const Setting& s : Client::settings()) {
        man << ".TP\n.B " << s.id << " " << roff(s.name) << "\n"
            << roff(s.help) << "; " << s.min << " to " << s.max
            << (s.length > 1 ? ", " + std::to_string(s.length) + " values" : "")
            << (s.clamped ? ", clamped" : ", not clamped: other values are stored as given")
            << ".\n";
    }
    man << ".SH PORTS\n";
    for (int port = 0; port < Client::kNumPorts; ++port) {
        man << (port == 0 ? "" : ", ") << port << " " << roff(Client::portName(port));
    }
    man << ".\n.SH JSON OUTPUT\nWith\n.BR \\-\\-json :\n.nf\n";
    std::istringstream schema(kJsonSchema);
    for (std::string line; std::getline(schema, line);) man << roff(line) << "\n";
    man << ".fi\n"
        << ".SH ENVIRONMENT\n.TP\n.B " << kBusVariable << "\nThe default of\n.BR \\-\\-bus .\n"
        << ".SH ACCESS\nOn the system bus everyone may read; only root, the user\n.B vessa\n"
           "and members of the group\n.B audio\nmay change settings.\n"
        << ".SH EXIT STATUS\n0 done; 1 refused or failed, with the reason on standard error; "
           "2 usage error.\n.SH EXAMPLES\n.nf\n";
    for (const Command& command : commands()) {
        std::istringstream lines(command.examples);
        for (std::string line; std::getline(lines, line);) man << roff(line) << "\n";
    }
    man << ".fi\n.SH SEE ALSO\n.BR vessad (8)\n";
    return man.str();
}

std::string CommandLine::bashCompletion() {
    std::ostringstream out;
    std::string words, valueOptions, ports;
    for (const Command& command : commands()) words += std::string(command.name) + " ";
    for (const Option& option : options()) {
        words += std::string(option.name) + " ";
        if (option.value != nullptr) valueOptions += std::string(option.name) + "|";
    }
    valueOptions.pop_back();
    for (int port = 0; port < Client::kNumPorts; ++port)
        ports += Client::portName(port) + std::string(" ");
    std::string settings;
    for (const Setting& s : Client::settings()) settings += std::string(s.name) + " ";
    out << "# bash completion for vessactl (generated by vessactl --generate-bash-completion)\n\n"
        << "_vessactl() {\n"
        << "    local cur prev words cword\n"
        << "    _init_completion || return\n"
        << "    case $prev in\n"
        << "        --bus) COMPREPLY=($(compgen -W \"session system\" -- \"$cur\")); return ;;\n"
        << "        " << valueOptions << ") return ;;\n"
        << "    esac\n"
        << "    local i command=\"\" position=0\n"
        << "    for ((i = 1; i < cword; i++)); do\n"
        << "        case ${words[i]} in\n"
        << "            " << valueOptions << ") ((i++)) ;;\n"
        << "            -*) ;;\n"
        << "            *) if [[ -z $command ]]; then command=${words[i]}; else ((position++)); fi "
           ";;\n"
        << "        esac\n"
        << "    done\n"
        << "    if [[ -z $command ]]; then\n"
        << "        COMPREPLY=($(compgen -W \"" << words << "--help --version\" -- \"$cur\"))\n"
        << "        return\n"
        << "    fi\n"
        << "    local kinds=\"\"\n"
        << "    case $command in\n";
    // Which word of each command is a port or a setting, from the command table.
    for (const Command& command : commands()) {
        std::string cases;
        for (size_t i = 0; i < command.positionals.size(); ++i) {
            const std::string name = command.positionals[i].name;
            if (name == kPort || name == kSetting) {
                cases += "            " + std::to_string(i) + ") kinds=\"" +
                         (name == kPort ? ports : settings) + "\" ;;\n";
            }
        }
        std::string flags;
        for (const Flag& flag : command.flags) flags += std::string(flag.name) + " ";
        if (cases.empty() && flags.empty()) continue;
        out << "        " << command.name << ")\n";
        if (!cases.empty())
            out << "            case $position in\n" << cases << "            esac\n";
        out << "            kinds+=\" " << flags << "\" ;;\n";
    }
    out << "    esac\n"
        << "    COMPREPLY=($(compgen -W \"$kinds --help\" -- \"$cur\"))\n"
        << "}\n"
        << "complete -F _vessactl vessactl\n";
    return out.str();
}

}  // namespace vessa
