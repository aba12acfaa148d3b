// vessad, vessactl and other clients as separate processes on a private bus.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "ChildProcess.h"
#include "PqsClient.h"
#include "PqsRequest.h"
#include "PrivateBus.h"
#include "TempDir.h"
#include "dbus/PqsNames.h"
#include "service/FourCC.h"

namespace vessa::test {
namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<uint8_t>;

constexpr const char* kDefaultTuning = "/odm/etc/vessa/multimedia_vessa_zan_default.xml";
constexpr const char* kOemTuning = "/data/vendor/vessa/zan-extra.xml";

std::string readSource(const std::string& relative) {
    std::ifstream in(sourcePath(relative), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Polls `condition` until it holds or the time is up.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds timeout = 5s) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(20ms);
    }
    return true;
}

class EndToEndTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(bus.address().empty()) << bus.error();
        dir.write("root" + std::string(kDefaultTuning),
                  readSource("etc/multimedia_vessa_zan_default.xml"));
    }

    void installOemTuning() {
        dir.write("root" + std::string(kOemTuning), readSource("etc/zan-extra.xml"));
    }

    void startService() {
        vessad = std::make_unique<ChildProcess>();
        ASSERT_TRUE(vessad->start({VESSAD_PATH, "--root", root(), "--bus", bus.address()},
                                  dir.path(), "vessad"));
        ASSERT_TRUE(bus.waitForOwner(kPqsServiceName, 10s)) << vessad->err();
    }

    // SIGTERM, then the exit status; the name must be released.
    int stopService() {
        int status = vessad->stop(SIGTERM);
        EXPECT_TRUE(bus.waitForOwner(kPqsServiceName, 5s, false));
        return status;
    }

    ChildProcess::Result vessactl(std::vector<std::string> args) {
        args.insert(args.begin(), {VESSACTL_PATH, "--bus", bus.address()});
        return ChildProcess::run(args, dir.path());
    }

    // The output of a command that must succeed.
    std::string ctl(const std::vector<std::string>& args) {
        ChildProcess::Result result = vessactl(args);
        EXPECT_EQ(0, result.exitCode)
                << "vessactl " << args[0] << ": " << result.err << "\nvessad log:\n"
                << (vessad ? vessad->err() : "");
        return result.out;
    }

    ChildProcess::Result busctl(const std::vector<std::string>& args) {
        std::vector<std::string> argv = {
                "/usr/bin/busctl", "--address=" + bus.address(),           "call", kPqsServiceName,
                kPqsObjectPath,    PqsClient::ServiceCalls::INTERFACE_NAME};
        argv.insert(argv.end(), args.begin(), args.end());
        return ChildProcess::run(argv, dir.path());
    }

    // A client inside the test process.
    std::unique_ptr<PqsClient> connectClient() {
        auto client = std::make_unique<PqsClient>(bus.address());
        std::string error;
        EXPECT_TRUE(client->connect(&error)) << error;
        return client;
    }

    int64_t intParam(PqsClient& client, const char (&code)[5]) {
        return client.service().getIntParam(android::fourCC(code));
    }

    std::string root() const { return dir.path() + "/root"; }

    TempDir dir;
    PrivateBus bus{dir.path()};
    std::unique_ptr<ChildProcess> vessad;
};

TEST_F(EndToEndTest, VessactlChangesReachEveryRegisteredClient) {
    startService();
    ChildProcess watcher;
    ASSERT_TRUE(watcher.start({VESSACTL_PATH, "--bus", bus.address(), "--uid", "5000", "watch"},
                              dir.path(), "watch"));
    ASSERT_TRUE(watcher.waitForOutput("clients changed\n", 10s)) << watcher.err();
    std::unique_ptr<PqsClient> inProcess = connectClient();
    inProcess->registerClient(0, 6000);

    EXPECT_EQ("effect off\n", ctl({"off"}));
    EXPECT_EQ("profile 2 Music\n", ctl({"profile", "2"}));
    // Out of range: the service clamps what it stores, but echoes the request.
    EXPECT_EQ("108 dialog-enhancer-amount: 16\n", ctl({"set", "2", "108", "20"}));
    EXPECT_EQ("105 dialog-enhancer-enable (port 3 headphone): 0\n",
              ctl({"port-set", "2", "headphone", "105", "0"}));
    EXPECT_EQ("port 0 internal_speaker: internal_speaker_quad\n",
              ctl({"select", "0", "internal_speaker_quad"}));

    for (const char* line :
         {"effect off\n", "profile 2 selected\n", "profile 2: 108 dialog-enhancer-amount = 20\n",
          "profile 2, port 3 headphone: 105 dialog-enhancer-enable = 0\n",
          "tuning device selected: internal_speaker_quad\n"}) {
        EXPECT_TRUE(watcher.waitForOutput(line, 5s)) << line << " missing in:\n" << watcher.out();
    }
    // The in-process client got the applied blob, word 1 holding the selected profile.
    Bytes update;
    ASSERT_TRUE(inProcess->waitForUpdate(
            [](const Bytes& b) { return PqsRequest::blobCommand(b) == PqsRequest::kSelectProfile; },
            5s, &update));
    EXPECT_EQ(2, PqsRequest::word(update, 1));

    std::string status = ctl({"status"});
    EXPECT_NE(std::string::npos, status.find("effect   off\n")) << status;
    EXPECT_NE(std::string::npos, status.find("profile  2 Music (5 profiles)\n")) << status;
    std::string dump = ctl({"dump"});
    EXPECT_NE(std::string::npos, dump.find("ZAN Status : off\n")) << dump;
    EXPECT_NE(std::string::npos, dump.find("Profile ID : 2\n")) << dump;
    EXPECT_NE(std::string::npos,
              ctl({"devices", "internal_speaker"}).find("* internal_speaker_quad\n"));

    inProcess.reset();
    EXPECT_EQ(0, watcher.stop(SIGINT)) << watcher.err();
    EXPECT_EQ(0, stopService()) << vessad->err();
}

TEST_F(EndToEndTest, KilledDecoderClientIsRemoved) {
    startService();
    std::unique_ptr<PqsClient> probe = connectClient();
    EXPECT_EQ(0, intParam(*probe, "DCCP"));

    ChildProcess decoder;
    ASSERT_TRUE(decoder.start(
            {VESSACTL_PATH, "--bus", bus.address(), "--type", "2", "--uid", "1013", "watch"},
            dir.path(), "decoder"));
    ASSERT_TRUE(decoder.waitForOutput("clients changed\n", 10s)) << decoder.err();
    EXPECT_EQ(1, intParam(*probe, "DCCP"));
    EXPECT_EQ(2, intParam(*probe, "LCTP"));

    decoder.stop(SIGKILL);
    EXPECT_TRUE(eventually([&] { return intParam(*probe, "DCCP") == 0; })) << vessad->err();
    EXPECT_EQ(2, intParam(*probe, "LCTP"));
    // The dead client is out of the table: the same key can register again.
    probe->registerClient(2, 1013);
    EXPECT_EQ(1, intParam(*probe, "DCCP"));
    EXPECT_EQ(std::string::npos, vessad->err().find("register uid already existing"));
}

TEST_F(EndToEndTest, StatePersistsAcrossARestart) {
    startService();
    ctl({"off"});
    ctl({"profile", "3"});
    // A game client leaving does not save; the daemon's clean stop must.
    ASSERT_EQ("115 reverb-suppression-amount: 7\n", ctl({"--type", "7", "set", "3", "115", "7"}));
    ASSERT_EQ(0, stopService()) << vessad->err();

    startService();
    std::string status = ctl({"status"});
    EXPECT_NE(std::string::npos, status.find("effect   off\n")) << status;
    EXPECT_NE(std::string::npos, status.find("profile  3 Voice")) << status;
    EXPECT_EQ("115 reverb-suppression-amount: 7\n", ctl({"get", "3", "115"}));
}

TEST_F(EndToEndTest, ReloadWithAnOemFileAddsDevices) {
    startService();
    std::string before = ctl({"devices", "bluetooth"});
    EXPECT_EQ(std::string::npos, before.find("bt_neckband_x1")) << before;
    ChildProcess watcher;
    ASSERT_TRUE(
            watcher.start({VESSACTL_PATH, "--bus", bus.address(), "watch"}, dir.path(), "watch"));
    ASSERT_TRUE(watcher.waitForOutput("clients changed\n", 10s)) << watcher.err();

    installOemTuning();
    EXPECT_EQ("tuning reloaded\n", ctl({"reload"}));
    EXPECT_TRUE(watcher.waitForOutput("parameters changed (tuning reloaded)\n", 5s));
    std::string after = ctl({"devices", "bluetooth"});
    EXPECT_NE(std::string::npos, after.find("  bt_neckband_x1\n")) << after;
    EXPECT_EQ("port 4 bluetooth: bt_neckband_x1\n", ctl({"select", "bluetooth", "bt_neckband_x1"}));
    ChildProcess::Result unknown = vessactl({"select", "bluetooth", "no_such_device"});
    EXPECT_EQ(1, unknown.exitCode);
    EXPECT_NE(std::string::npos, unknown.err.find("is not one of its tuning devices"));
    watcher.stop(SIGINT);
}

TEST_F(EndToEndTest, BusctlCallsTheRunningService) {
    startService();
    ChildProcess::Result channels =
            busctl({"getIntParam", "u", std::to_string(android::fourCC("CHCT"))});
    EXPECT_EQ(0, channels.exitCode) << channels.err;
    EXPECT_EQ("x 2\n", channels.out);
    // Profile names need the manager, which the first registered client starts.
    ctl({"status"});
    ChildProcess::Result name = busctl({"getProfileName", "i", "1"});
    EXPECT_EQ(0, name.exitCode) << name.err;
    EXPECT_EQ("s \"Movie\"\n", name.out);
    ChildProcess::Result wrongType = busctl({"getIntParam", "s", "CHCT"});
    EXPECT_NE(0, wrongType.exitCode);
    EXPECT_EQ("x 2\n", busctl({"getIntParam", "u", std::to_string(android::fourCC("CHCT"))}).out);
}

TEST_F(EndToEndTest, BadInputOverTheBusGetsNeutralAnswersAndTheServiceStaysUp) {
    startService();
    std::unique_ptr<PqsClient> client = connectClient();
    client->registerClient(0, 42);
    PqsClient::ServiceCalls& service = client->service();

    EXPECT_EQ(-22, service.setAupParam(Bytes(64 * 1024 + 4, 0)));
    auto [oversized, nothing] =
            service.getAupParam(PqsRequest::query(PqsRequest::kQueryOnOff), 1u << 31);
    EXPECT_EQ(-22, oversized);
    EXPECT_TRUE(nothing.empty());
    // A short request reads as zeros: command 0, the on/off state.
    auto [shortStatus, shortAnswer] = service.getAupParam(Bytes{0, 0}, 8);
    EXPECT_EQ(0, shortStatus);
    EXPECT_EQ(8u, shortAnswer.size());
    EXPECT_TRUE(service.getAvailableTuningDevices(0, -5).empty());
    EXPECT_EQ(Bytes(3, 0), service.getAvailableTuningDevices(99, 3));
    EXPECT_EQ(0, service.getAvailableTuningDevicesLen(-1));
    EXPECT_EQ("", service.getSelectedTuningDevice(7));
    EXPECT_EQ("", service.getProfileName(-3));
    service.setSelectedTuningDevice(-1, Bytes{'x'});
    service.setSelectedTuningDevice(0, Bytes{});
    // A blob of a few bytes and one with an unknown command are applied as nothing
    // but still reach the clients.
    EXPECT_EQ(0, service.setAupParam(Bytes{0, 0, 0, 1, 9}));
    EXPECT_EQ(0, service.setAupParam(Bytes{0, 0, 0, 99, 0, 0, 0, 0}));
    EXPECT_TRUE(client->waitForUpdate(
            [](const Bytes& b) { return PqsRequest::blobCommand(b) == 99; }, 5s));
    EXPECT_EQ(0, service.setParam(0x2, 0x6e6f6564, {}));
    EXPECT_EQ(0, service.commitChange());

    ChildProcess::Result status = vessactl({"status"});
    EXPECT_EQ(0, status.exitCode) << status.err << vessad->err();
    EXPECT_TRUE(vessad->running());
}

TEST_F(EndToEndTest, StoreListsTheCommittedEffectParametersByCode) {
    startService();
    ctl({"on"});
    std::string before = ctl({"store"});
    EXPECT_NE(std::string::npos, before.find("0x2 DEON ")) << before;
    ctl({"set", "0", "105", "0"});
    ctl({"set", "0", "105", "1"});
    std::string store = ctl({"store"});
    EXPECT_NE(std::string::npos, store.find("0x2 DEON 1\n")) << store;
    EXPECT_EQ("", ctl({"store", "--pending"}));
}

TEST_F(EndToEndTest, ASecondDaemonOnTheSameBusIsRefused) {
    startService();
    ChildProcess::Result second =
            ChildProcess::run({VESSAD_PATH, "--root", root(), "--bus", bus.address()}, dir.path());
    EXPECT_EQ(1, second.exitCode);
    EXPECT_NE(std::string::npos, second.err.find("the name has an owner already")) << second.err;
    std::unique_ptr<PqsClient> client = connectClient();
    EXPECT_EQ(2, intParam(*client, "CHCT"));
}

TEST_F(EndToEndTest, VessactlExplainsAMissingService) {
    ChildProcess::Result result = vessactl({"status"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.err.find("is not running on the bus at")) << result.err;
    ChildProcess::Result typo = vessactl({"stauts"});
    EXPECT_EQ(2, typo.exitCode);
    EXPECT_NE(std::string::npos, typo.err.find("unknown command 'stauts'")) << typo.err;
}

}  // namespace
}  // namespace vessa::test
