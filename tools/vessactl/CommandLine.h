#pragma once

#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace vessa {

// What one vessactl command line asks for.
struct Invocation {
    std::string command;
    std::map<std::string, std::string> args;  // positionals by name ("PROFILE")
    std::vector<std::string> values;          // the trailing VALUE... of set and port-set
    std::set<std::string> flags;              // the command's own flags ("--follow")
    std::string bus = "session";
    std::string type = "0";  // decimal text, checked when used
    std::string uid;         // empty: this process's id
    bool json = false;

    const std::string& arg(const std::string& name) const { return args.at(name); }
    bool has(const std::string& flag) const { return flags.count(flag) != 0; }
};

// The commands, options and help of vessactl: the one description from which the
// parser, --help, the man page and the bash completion are all made.
class CommandLine {
  public:
    struct Positional {
        const char* name;
        const char* help;
        bool many;
    };
    struct Flag {
        const char* name;
        const char* help;
    };
    struct Command {
        const char* name;
        const char* help;
        std::vector<Positional> positionals;
        std::vector<Flag> flags;
        const char* examples;  // one per line
    };
    // The options every command takes.
    struct Option {
        const char* name;
        const char* value;  // null for a flag
        const char* help;
    };
    static const std::vector<Option>& options();
    static const std::vector<Command>& commands();
    static const Command* findCommand(const std::string& name);

    // Exit statuses.
    static constexpr int kOk = 0;
    static constexpr int kFailed = 1;
    static constexpr int kUsage = 2;
    static constexpr int kContinue = -1;

    // Fills `invocation`, or prints help, the version or a usage error and returns the
    // exit status; kContinue when the command should run.
    static int parse(int argc, const char* const* argv, Invocation* invocation, std::ostream& out,
                     std::ostream& err);
    static std::string manPage();
    static std::string bashCompletion();

  private:
    CommandLine() = delete;
    static std::string footer();
    static std::string roff(const std::string& text);
};

}  // namespace vessa
