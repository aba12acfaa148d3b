// The system-bus policy in etc/ on a bus daemon with the system bus's default
// rules: only the service's user may own the name and call clients back.

#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "TempDir.h"
#include "dbus/PqsNames.h"

namespace vessa::test {
namespace {

using namespace std::chrono_literals;

// The default context of the system bus: nothing may be owned and no method
// may be called unless a service's policy opens it.
const char* kSystemLikeConfig = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
  </policy>
  <include>%s</include>
</busconfig>
)";

class SystemBusPolicyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (getuid() != 0 || getpwnam("nobody") == nullptr || access(kSetpriv, X_OK) != 0) {
            GTEST_SKIP() << "needs root, the user nobody and setpriv";
        }
        // The socket must be reachable by the unprivileged user.
        chmod(dir.path().c_str(), 0755);
        char config[2048];
        snprintf(config, sizeof(config), kSystemLikeConfig,
                 sourcePath("etc/vendor.vessa_v3_6.hardware.pqs360.conf").c_str());
        bus = std::make_unique<PrivateBus>(dir.path(), dir.write("system.conf", config));
        ASSERT_FALSE(bus->address().empty()) << bus->error();
        dir.write("root/odm/etc/vessa/multimedia_vessa_zan_default.xml",
                  readFile(sourcePath("etc/multimedia_vessa_zan_default.xml")));
    }

    std::vector<std::string> asNobody(std::vector<std::string> argv) {
        argv.insert(argv.begin(),
                    {kSetpriv, "--reuid=nobody", "--regid=nogroup", "--clear-groups"});
        return argv;
    }

    static std::string readFile(const std::string& path) {
        FILE* file = fopen(path.c_str(), "rb");
        std::string text;
        char buffer[4096];
        size_t n;
        while (file != nullptr && (n = fread(buffer, 1, sizeof(buffer), file)) > 0) {
            text.append(buffer, n);
        }
        if (file != nullptr) fclose(file);
        return text;
    }

    static constexpr const char* kSetpriv = "/usr/bin/setpriv";
    TempDir dir;
    std::unique_ptr<PrivateBus> bus;
};

TEST_F(SystemBusPolicyTest, OnlyTheServiceUserOwnsTheNameAndEveryoneMayCall) {
    std::string root = dir.path() + "/root";
    ChildProcess::Result intruder = ChildProcess::run(
            asNobody({VESSAD_PATH, "--root", root, "--bus", bus->address()}), dir.path());
    EXPECT_EQ(1, intruder.exitCode);
    EXPECT_NE(std::string::npos, intruder.err.find("cannot serve")) << intruder.err;

    ChildProcess vessad;
    ASSERT_TRUE(vessad.start({VESSAD_PATH, "--root", root, "--bus", bus->address()}, dir.path(),
                             "vessad"));
    ASSERT_TRUE(bus->waitForOwner(kPqsServiceName, 10s)) << vessad.err();

    // An unprivileged client calls the service and is called back: vessactl
    // only answers once the service's echo of its request has arrived.
    ChildProcess::Result client = ChildProcess::run(
            asNobody({VESSACTL_PATH, "--bus", bus->address(), "off"}), dir.path());
    EXPECT_EQ(0, client.exitCode) << client.err << vessad.err();
    EXPECT_EQ("effect off\n", client.out);
    EXPECT_EQ(0, vessad.stop(SIGTERM)) << vessad.err();
}

}  // namespace
}  // namespace vessa::test
