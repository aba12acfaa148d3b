// vessactl: the command-line client of the vessa parameter service.

#include <unistd.h>

#include <iostream>
#include <string>

#include "CommandLine.h"
#include "VessaCtl.h"
#include "vessa/Client.h"

int main(int argc, char** argv) {
    using vessa::CommandLine;
    // The build makes the man page and the completion from the command table.
    if (argc == 2 && std::string(argv[1]) == "--generate-man") {
        std::cout << CommandLine::manPage();
        return CommandLine::kOk;
    }
    if (argc == 2 && std::string(argv[1]) == "--generate-bash-completion") {
        std::cout << CommandLine::bashCompletion();
        return CommandLine::kOk;
    }
    vessa::Invocation invocation;
    int status = CommandLine::parse(argc, argv, &invocation, std::cout, std::cerr);
    if (status != CommandLine::kContinue) return status;

    vessa::client::Client::Identity identity;
    long number = 0;
    if (!vessa::VessaCtl::parseDecimal(invocation.type, INT32_MIN, INT32_MAX, &number)) {
        std::cerr << "vessactl: --type takes a decimal number, not '" << invocation.type << "'\n";
        return CommandLine::kUsage;
    }
    identity.type = static_cast<int>(number);
    identity.uid = static_cast<uint32_t>(getpid());
    if (!invocation.uid.empty()) {
        if (!vessa::VessaCtl::parseDecimal(invocation.uid, 0, UINT32_MAX, &number)) {
            std::cerr << "vessactl: --uid takes a decimal number, not '" << invocation.uid << "'\n";
            return CommandLine::kUsage;
        }
        identity.uid = static_cast<uint32_t>(number);
    }
    auto client = vessa::client::Client::connect(invocation.bus, identity);
    if (!client) {
        std::cerr << "vessactl: " << client.error().message << "\n";
        return CommandLine::kFailed;
    }
    vessa::VessaCtl ctl(client.value(), invocation, std::cout, std::cerr);
    return ctl.run();
}
