// vessactl: the command-line client of the vessa parameter service.

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "VessaCtl.h"
#include "vessa/Client.h"

namespace {

bool parseOption(const std::string& text, long* out) {
    char* end = nullptr;
    *out = std::strtol(text.c_str(), &end, 0);
    return !text.empty() && *end == '\0';
}

}  // namespace

int main(int argc, char** argv) {
    std::string bus = "session";
    vessa::client::Client::Identity identity;
    identity.uid = static_cast<uint32_t>(getpid());
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "-h" || arg == "--help" || arg == "help") {
            vessa::VessaCtl::printUsage(std::cout);
            return vessa::VessaCtl::kOk;
        }
        bool takesValue = arg == "--bus" || arg == "--type" || arg == "--uid";
        if (args.empty() && takesValue) {
            long number = 0;
            if (i + 1 >= argc || (arg != "--bus" && !parseOption(argv[i + 1], &number))) {
                std::cerr << "vessactl: " << arg << " needs a value (see vessactl --help)\n";
                return vessa::VessaCtl::kUsage;
            }
            if (arg == "--bus") bus = argv[i + 1];
            if (arg == "--type") identity.type = static_cast<int>(number);
            if (arg == "--uid") identity.uid = static_cast<uint32_t>(number);
            ++i;
            continue;
        }
        args.push_back(arg);
    }
    if (args.empty() || !vessa::VessaCtl::isCommand(args[0])) {
        std::cerr << "vessactl: "
                  << (args.empty() ? "no command given" : "unknown command '" + args[0] + "'")
                  << " (see vessactl --help)\n";
        return vessa::VessaCtl::kUsage;
    }
    auto client = vessa::client::Client::connect(bus, identity);
    if (!client) {
        std::cerr << "vessactl: " << client.error().message << "\n";
        return vessa::VessaCtl::kFailed;
    }
    vessa::VessaCtl ctl(client.value(), identity, bus, std::cout, std::cerr);
    return ctl.run(args);
}
