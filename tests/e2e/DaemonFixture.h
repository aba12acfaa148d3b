#pragma once

// vessad as a process on a private bus, with the helpers the end-to-end tests share.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "client/PqsClient.h"
#include "protocol/PqsProtocol.h"
#include "PrivateBus.h"
#include "dbus/PqsNames.h"

namespace vessa::test {

using Args = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

class DaemonFixture : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_FALSE(bus.address().empty()) << bus.error(); }

    Args vessadArgs(const PrivateBus& on) const {
        return {VESSAD_PATH, "--root", dir, "--bus", on.address()};
    }
    Args ctlArgs(Args args) const {
        args.insert(args.begin(), {VESSACTL_PATH, "--bus", bus.address()});
        return args;
    }
    ChildProcess::Result run(const Args& argv) const { return ChildProcess::run(argv, dir); }

    void startService() {
        vessad = std::make_unique<ChildProcess>(vessadArgs(bus), dir);
        ASSERT_TRUE(bus.waitForOwner(kPqsServiceName)) << vessad->err();
    }
    // SIGTERM, then the exit code; the name must be released.
    int stopService() {
        int status = vessad->stop(SIGTERM);
        EXPECT_TRUE(bus.waitForOwner(kPqsServiceName, false));
        return status;
    }

    // The output of a vessactl command that must succeed.
    std::string ctl(const Args& args) const {
        ChildProcess::Result result = run(ctlArgs(args));
        EXPECT_EQ(0, result.exitCode)
                << "vessactl " << args[0] << ": " << result.err << "\nvessad log:\n"
                << (vessad ? vessad->err() : "");
        return result.out;
    }

    std::unique_ptr<PqsClient> connectClient() const {
        auto client = std::make_unique<PqsClient>(bus.address());
        std::string error;
        EXPECT_TRUE(client->connect(&error)) << error;
        return client;
    }

    SampleRoot root;  // the device root with the default tuning file; the test's files too
    const std::string dir = root.dir.path();
    PrivateBus bus{dir};
    std::unique_ptr<ChildProcess> vessad;
};

}  // namespace vessa::test
