#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "vessa/Client.h"

namespace vessa {

// The commands of vessactl, run against one connected client.
class VessaCtl {
  public:
    // Exit statuses.
    static constexpr int kOk = 0;
    static constexpr int kFailed = 1;
    static constexpr int kUsage = 2;

    VessaCtl(client::Client& client, client::Client::Identity identity, const std::string& bus,
             std::ostream& out, std::ostream& err);

    // Runs one command (its name first); returns the exit status.
    int run(const std::vector<std::string>& args);
    // True when `name` is a command; lets main report a typo before connecting.
    static bool isCommand(const std::string& name);
    static void printUsage(std::ostream& out);

  private:
    using Args = std::vector<std::string>;
    struct Command {
        const char* name;
        const char* syntax;
        const char* help;
        size_t minArgs;
        size_t maxArgs;
        int (VessaCtl::*run)(const Args&);
    };
    static const Command kCommands[];
    static const Command* findCommand(const std::string& name);

    int status(const Args& args);
    int profiles(const Args& args);
    int turnOn(const Args& args);
    int turnOff(const Args& args);
    int selectProfile(const Args& args);
    int resetProfile(const Args& args);
    int get(const Args& args);
    int set(const Args& args);
    int portGet(const Args& args);
    int portSet(const Args& args);
    int devices(const Args& args);
    int selectDevice(const Args& args);
    int reload(const Args& args);
    int dump(const Args& args);
    int watch(const Args& args);
    int store(const Args& args);

    std::string profileText(int profile);
    int onOff(bool on);
    int printParameter(int profile, int port, int id);
    int setParameter(int profile, int port, int id, const Args& values);
    // The exit status for a failed call, with its message.
    int fail(const client::Error& error);

    bool parseNumber(const std::string& text, const char* what, long min, long max, int* out);
    bool parseProfile(const std::string& text, int* profile);
    bool parsePort(const std::string& text, int* port);
    bool parseParamId(const std::string& text, int* id);
    int fail(const std::string& message);
    int usage(const std::string& message);

    client::Client& mClient;
    client::Client::Identity mIdentity;
    std::string mBus;
    std::ostream& mOut;
    std::ostream& mErr;
};

}  // namespace vessa
