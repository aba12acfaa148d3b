#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "PqsClient.h"
#include "PqsRequest.h"

namespace vessa {

// The commands of vessactl, run against one connected client.
class VessaCtl {
  public:
    // Exit statuses.
    static constexpr int kOk = 0;
    static constexpr int kFailed = 1;
    static constexpr int kUsage = 2;

    // How this process registers with the service when it has to.
    struct Identity {
        int type = 0;
        uint32_t uid = 0;
    };

    VessaCtl(PqsClient& client, Identity identity, std::ostream& out, std::ostream& err);

    // Runs one command (its name first); returns the exit status.
    int run(const std::vector<std::string>& args);
    // True when `name` is a command; lets main report a typo before connecting.
    static bool isCommand(const std::string& name);
    static void printUsage(std::ostream& out);

  private:
    using Args = std::vector<std::string>;
    using Bytes = PqsRequest::Bytes;
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

    // Registers this process once; the service starts its manager on the first client.
    void ensureRegistered();
    // Registers only if the service has not started its manager yet.
    void ensureReady();
    // Sends a blob and waits until the service has applied it (its echo arrives).
    bool apply(const Bytes& blob);
    std::vector<int32_t> query(const Bytes& request, size_t words, int* status = nullptr);
    int profileCount();
    std::string profileText(int profile);
    int onOff(bool on);
    int printParameter(int profile, int port, int id);
    int setParameter(int profile, int port, int id, const Args& values);

    bool parseNumber(const std::string& text, const char* what, long min, long max, int* out);
    bool parseProfile(const std::string& text, int* profile);
    bool parsePort(const std::string& text, int* port);
    bool parseParamId(const std::string& text, int* id);
    int fail(const std::string& message);
    int usage(const std::string& message);

    PqsClient& mClient;
    Identity mIdentity;
    std::ostream& mOut;
    std::ostream& mErr;
};

}  // namespace vessa
