// vessad, vessactl, busctl and other clients as separate processes on a private bus.

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <tuple>

#include "DaemonFixture.h"
#include "dbus/PqsNames.h"

namespace vessa::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using namespace std::chrono_literals;

class VessadAndItsClients : public DaemonFixture {};

// The watching client is a decoder: killed, it is removed from the table of
// clients, and the same key can register again.
TEST_F(VessadAndItsClients, ClientsInOtherProcessesDriveTheServiceHearEachChangeAndGoWhenKilled) {
    startService();
    ChildProcess watcher(ctlArgs({"--type", "2", "--uid", "1013", "watch", "--all"}), dir);
    ASSERT_TRUE(watcher.waitForOutput("clients changed\n")) << watcher.err();
    EXPECT_THAT(ctl({"devices", "bluetooth"}), Not(HasSubstr("bt_neckband_x1")));
    root.installOem(root.sampleOem());

    // Each command, its answer, and what the watching client prints when called back.
    for (const auto& [args, answer, heard] :
         std::vector<std::tuple<Args, const char*, const char*>>{
                 {{"off"}, "effect off\n", "effect off\n"},
                 {{"profile", "2"}, "profile 2 Music\n", "profile 2 selected\n"},
                 // Out of range: the service clamps what it stores, but echoes the request.
                 {{"set", "2", "108", "20"},
                  "108 dialog-enhancer-amount: 16 (clamped to 0..16 from 20)\n",
                  "profile 2: 108 dialog-enhancer-amount = 20\n"},
                 {{"port-set", "2", "headphone", "105", "0"},
                  "105 dialog-enhancer (port 3 headphone): 0\n",
                  "profile 2, port 3 headphone: 105 dialog-enhancer = 0\n"},
                 {{"select", "0", "internal_speaker_quad"},
                  "port 0 internal_speaker: internal_speaker_quad\n",
                  "tuning device selected: internal_speaker_quad\n"},
                 // "RLTF" reads the OEM file: its devices join the lists.
                 {{"reload"}, "tuning reloaded\n", "parameters changed (tuning reloaded)\n"},
                 {{"select", "bluetooth", "bt_neckband_x1"},
                  "port 4 bluetooth: bt_neckband_x1\n",
                  "tuning device selected: bt_neckband_x1\n"}}) {
        EXPECT_EQ(answer, ctl(args));
        EXPECT_TRUE(watcher.waitForOutput(heard)) << heard << "missing in:\n" << watcher.out();
    }
    EXPECT_THAT(ctl({"status"}),
                AllOf(HasSubstr("effect   off\n"), HasSubstr("profile  2 Music (5 profiles)\n")));
    EXPECT_THAT(ctl({"dump"}),
                AllOf(HasSubstr("ZAN Status : off\n"), HasSubstr("Profile ID : 2\n")));
    ChildProcess::Result unknown = run(ctlArgs({"select", "bluetooth", "no_such_device"}));
    EXPECT_EQ(1, unknown.exitCode);
    EXPECT_THAT(unknown.err, HasSubstr("is not one of its tuning devices"));
    // The store lists the committed effect parameters by code.
    ctl({"on"});
    ctl({"set", "2", "105", "0"});
    EXPECT_THAT(ctl({"store", "--raw"}), HasSubstr("0x2 DEON 0\n"));
    EXPECT_THAT(ctl({"store"}),
                AllOf(HasSubstr("internal_speaker (0x2):\n"), HasSubstr("\n  DEON  0\n")));
    EXPECT_EQ("(the store is empty)\n", ctl({"store", "--pending"}));

    std::unique_ptr<PqsClient> probe = connectClient();
    auto intParam = [&probe](const char(&code)[5]) {
        return probe->service().getIntParam(client::fourCC(code));
    };
    EXPECT_EQ(1, intParam("DCCP"));
    watcher.stop(SIGKILL);
    EXPECT_TRUE(eventually([&] { return intParam("DCCP") == 0; })) << vessad->err();
    EXPECT_EQ(2, intParam("LCTP"));
    probe->registerClient(2, 1013);  // counted only if the key is free
    EXPECT_EQ(1, intParam("DCCP"));
    EXPECT_EQ(0, stopService()) << vessad->err();
}

// Resident memory of a process, in kB (0 when unknown).
long residentKb(pid_t pid) {
    std::string status = readFile("/proc/" + std::to_string(pid) + "/status");
    size_t at = status.find("VmRSS:");
    return at == std::string::npos ? 0 : std::stol(status.substr(at + 6));
}

// One connection registers thousands of made-up uids while it reads its updates:
// past the per-connection cap it is refused, and once it has left, a genuine
// client hears every change again, with the daemon's memory about where it was.
TEST_F(VessadAndItsClients, ARegistrationFloodIsCappedAndCallbacksToOthersKeepFlowing) {
    startService();
    std::unique_ptr<PqsClient> genuine = connectClient();
    genuine->registerClient(0, 100);
    const long before = residentKb(vessad->pid());
    {
        std::unique_ptr<PqsClient> flooder = connectClient();
        flooder->registerClient(0, 1000);  // exports its callbacks and reads them
        int refused = 0;
        for (uint32_t uid = 1001; uid < 4000; ++uid) {
            try {
                flooder->service().registerClient(sdbus::ObjectPath(PqsClient::kCallbacksPath), 0,
                                                  uid);
            } catch (const sdbus::Error& e) {
                EXPECT_EQ("org.freedesktop.DBus.Error.LimitsExceeded", e.getName());
                ++refused;
            }
        }
        EXPECT_EQ(2999 - 15, refused);
    }
    for (int profile : {1, 2, 3, 0, 4, 1}) {
        Bytes request = PqsProtocol::selectProfile(profile);
        ASSERT_EQ(0, genuine->service().setAupParam(request));
        EXPECT_TRUE(genuine->waitForUpdate(
                [&](const Bytes& b) { return PqsProtocol::isEchoOf(b, request); }, 10s))
                << profile << "\n"
                << vessad->err();
    }
    // Unbounded, this grew by hundreds of MB; the margin leaves room for the
    // sanitizer builds' quarantine of freed memory.
    EXPECT_LT(residentKb(vessad->pid()) - before, 64 * 1024);
    // The refusals were logged, but not one line each.
    std::string log = vessad->err();
    std::regex refusal("refused: ");
    auto lines = std::distance(std::sregex_iterator(log.begin(), log.end(), refusal), {});
    EXPECT_GE(lines, 1);
    EXPECT_LT(lines, 10);
    EXPECT_EQ(0, stopService()) << vessad->err();
}

// A second vessad may not serve the same bus. busctl, a client we did not write,
// and bad input: each call gets a neutral answer or a D-Bus error, and the service
// goes on. A game client leaving does not save; the daemon's clean stop must.
TEST_F(VessadAndItsClients, OneDaemonServesTheBusAnswersAnyClientOrBadInputAndSavesWhenStopped) {
    ChildProcess::Result missing = run(ctlArgs({"status"}));
    EXPECT_EQ(1, missing.exitCode);
    EXPECT_THAT(missing.err, HasSubstr("is not running on the bus at"));
    ChildProcess::Result typo = run(ctlArgs({"stauts"}));
    EXPECT_EQ(2, typo.exitCode);
    EXPECT_THAT(typo.err, HasSubstr("unknown command 'stauts'"));
    startService();
    ChildProcess::Result second = run(vessadArgs(bus));
    EXPECT_EQ(1, second.exitCode);
    EXPECT_THAT(second.err, HasSubstr("the name has an owner already"));
    // Each call, and busctl's output or the start of its error.
    auto check = [this](const std::vector<std::pair<Args, std::string>>& calls) {
        for (const auto& [args, output] : calls) {
            Args argv = {"/usr/bin/busctl",
                         "--address=" + bus.address(),
                         "call",
                         kPqsServiceName,
                         kPqsObjectPath,
                         PqsClient::ServiceCalls::INTERFACE_NAME,
                         "--"};
            argv.insert(argv.end(), args.begin(), args.end());
            ChildProcess::Result r = run(argv);
            EXPECT_EQ(output, r.exitCode == 0 ? r.out : r.err.substr(0, r.err.find(" to ")))
                    << args[0] << " " << args.back();
        }
    };
    // Before any client registered.
    check({{{"getProfileName", "i", "1"}, "s \"\"\n"},
           {{"getStoredParams", "b", "true"}, "ia(uuai) 0 0\n"},
           {{"setAupParam", "i", "5"}, "Call failed: Invalid arguments 'i'"}});
    // The first registered client starts the manager.
    ASSERT_EQ("115 reverb-suppression-amount: 7\n", ctl({"--type", "7", "set", "3", "115", "7"}));
    check({{{"getProfileName", "i", "1"}, "s \"Movie\"\n"},
           {{"getAvailableTuningDevicesLen", "i", "-1"}, "i 0\n"},
           {{"getAvailableTuningDevices", "ii", "99", "3"}, "ay 3 0 0 0\n"},
           {{"getAvailableTuningDevices", "ii", "0", "-5"}, "ay 0\n"},
           {{"getAvailableTuningDevices", "ii", "0", "1073741824"}, "ay 0\n"},
           {{"getSelectedTuningDevice", "i", "7"}, "s \"\"\n"},
           {{"setSelectedTuningDevice", "iay", "-1", "1", "120"}, ""},
           // A short request reads as zeros: command 0, the on/off state.
           {{"getAupParam", "ayu", "2", "0", "0", "8"}, "iay 0 8 1 0 0 0 0 0 0 0\n"},
           {{"setAupParam", "ay", "5", "0", "0", "0", "1", "9"}, "i 0\n"},
           {{"setParam", "uuai", "2", std::to_string(client::fourCC("DEON")), "0"}, "i 0\n"},
           {{"commitChange"}, "i 0\n"},
           {{"getIntParam", "u", std::to_string(client::fourCC("CHCT"))}, "x 2\n"}});
    ASSERT_EQ(0, stopService()) << vessad->err();
    startService();
    EXPECT_EQ("115 reverb-suppression-amount: 7\n", ctl({"get", "3", "115"}));
}

// Names in, what was stored out: clamped values say so, refused ones say why and exit 1,
// usage errors exit 2 with a suggestion, and --json is what scripts read.
TEST_F(VessadAndItsClients, VessactlSpeaksInNamesAndSaysWhatTheServiceDidWithAValue) {
    startService();
    auto status = [&](const Args& args) { return run(ctlArgs(args)); };
    ChildProcess::Result clamped = status({"set", "music", "ieq-amount", "20"});
    EXPECT_EQ(0, clamped.exitCode) << clamped.err;
    EXPECT_EQ("107 ieq-amount: 16 (clamped to 0..16 from 20)\n", clamped.out);
    // Decimal only: 010 is ten.
    EXPECT_EQ("107 ieq-amount (port 3 headphone): 10\n",
              ctl({"port-set", "Music", "headphone", "ieq-amount", "010"}));
    for (const auto& [args, exitCode, message] : std::vector<std::tuple<Args, int, const char*>>{
                 {{"port-set", "2", "headphone", "speaker-virtualizer", "1"},
                  1,
                  "not stored: speaker-virtualizer applies to the speaker endpoint only"},
                 {{"profile", "9"}, 1, "profile 9 does not exist: the service has profiles 0 to 4"},
                 {{"sttus"}, 2, "unknown command 'sttus' (did you mean 'status'?)"},
                 {{"get", "Musik", "ieq-amount"}, 2, "(did you mean 'Music'?)"},
                 {{"get", "2", "ieq-amout"}, 2, "(did you mean 'ieq-amount'?)"},
                 {{"devices", "blutooth"}, 2, "(did you mean 'bluetooth'?)"},
                 {{"set", "2", "ieq-amount", "0x10"}, 2, "'0x10' is not a decimal number"}}) {
        ChildProcess::Result result = status(args);
        EXPECT_EQ(exitCode, result.exitCode) << args[0] << ": " << result.err;
        EXPECT_THAT(result.err, HasSubstr(message));
    }
    EXPECT_THAT(ctl({"port-get", "2", "headphone", "102"}), HasSubstr(": 0\n"));

    // Options after the command, the bus from VESSA_BUS.
    ChildProcess::Result json = run({"/usr/bin/env", "VESSA_BUS=" + bus.address(), VESSACTL_PATH,
                                     "get", "Music", "geq-gains", "--json"});
    ASSERT_EQ(0, json.exitCode) << json.err;
    nlohmann::json gains = nlohmann::json::parse(json.out);
    EXPECT_EQ("Music", gains["profile"]["name"]);
    EXPECT_EQ(110, gains["setting"]["id"]);
    EXPECT_EQ(20u, gains["values"].size());
    auto bands = gains["frequencies"].get<std::vector<int>>();
    ASSERT_EQ(20u, bands.size());
    EXPECT_TRUE(std::is_sorted(bands.begin(), bands.end()) && bands.front() > 0);
    nlohmann::json state = nlohmann::json::parse(ctl({"status", "--json"}));
    EXPECT_EQ(true, state["effect"]);
    EXPECT_EQ(5, state["profileCount"]);
    for (const nlohmann::json& integer : state["integers"]) {
        if (integer["code"] == "DTFV") {
            EXPECT_EQ("3.3.0", integer["text"]);
        } else if (integer["code"] == "ADEV") {
            EXPECT_EQ("internal_speaker", integer["text"]);
        }
    }
    EXPECT_EQ(0, stopService());
}

// The system-bus policy in etc/ on a daemon with the system bus's default rules:
// nothing may be owned and no method called unless a service's policy opens it.
constexpr const char* kSystemBusDefaults = R"(<!DOCTYPE busconfig PUBLIC
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
)";

TEST_F(VessadAndItsClients, OnTheSystemBusAnyoneReadsButOnlyTheServiceUserAndAudioChange) {
    const char* setpriv = "/usr/bin/setpriv";
    if (getuid() != 0 || getpwnam("nobody") == nullptr || getgrnam("audio") == nullptr ||
        access(setpriv, X_OK) != 0) {
        GTEST_SKIP() << "needs root, the user nobody, the group audio and setpriv";
    }
    chmod(dir.c_str(), 0755);  // the socket must be reachable by nobody
    PrivateBus system(
            dir + "/system",
            root.dir.write("system/bus.conf",
                           kSystemBusDefaults + std::string("<include>") +
                                   sourcePath("etc/vendor.vessa_v3_6.hardware.pqs360.conf") +
                                   "</include></busconfig>\n"));
    ASSERT_FALSE(system.address().empty()) << system.error();
    // A clone may sit where nobody cannot enter (/root/...): the programs and the
    // library they load are copied to the test's own folder, which it can.
    const std::string programs = dir + "/programs";
    std::filesystem::create_directories(programs);
    chmod(programs.c_str(), 0755);
    auto reachable = [&](const std::string& built) {
        std::string copy = programs + "/" + std::filesystem::path(built).filename().string();
        std::filesystem::copy_file(built, copy, std::filesystem::copy_options::overwrite_existing);
        return copy;
    };
    std::filesystem::copy_file(VESSA_LIBRARY_PATH, programs + "/" + VESSA_LIBRARY_NAME);
    // The user nobody, alone or also in the group audio.
    auto asNobody = [&](Args argv, const char* groups = "--clear-groups") {
        argv[0] = reachable(argv[0]);
        Args prefixed = {setpriv, "--reuid=nobody", "--regid=nogroup",
                         groups,  "/usr/bin/env",   "LD_LIBRARY_PATH=" + programs};
        prefixed.insert(prefixed.end(), argv.begin(), argv.end());
        return prefixed;
    };
    auto ctlAsNobody = [&](Args args, const char* groups = "--clear-groups") {
        args.insert(args.begin(), {VESSACTL_PATH, "--bus", system.address()});
        return run(asNobody(args, groups));
    };
    ChildProcess::Result intruder = run(asNobody(vessadArgs(system)));
    EXPECT_EQ(1, intruder.exitCode);
    EXPECT_THAT(intruder.err, HasSubstr("cannot serve"));

    ChildProcess owner(vessadArgs(system), dir);
    ASSERT_TRUE(system.waitForOwner(kPqsServiceName)) << owner.err();
    // A stranger reads (registering for it, which loads the settings), but a change is
    // refused by the bus before the service sees it.
    ChildProcess::Result read = ctlAsNobody({"get", "2", "108"});
    EXPECT_EQ(0, read.exitCode) << read.err << owner.err();
    EXPECT_THAT(read.out, HasSubstr("108 dialog-enhancer-amount: "));
    for (const Args& change : {Args{"off"}, Args{"set", "2", "108", "3"}, Args{"reload"},
                               Args{"select", "0", "internal_speaker_quad"}}) {
        ChildProcess::Result refused = ctlAsNobody(change);
        EXPECT_EQ(1, refused.exitCode) << change[0] << ": " << refused.out;
        EXPECT_THAT(refused.err, HasSubstr("access denied by the bus policy")) << change[0];
    }
    EXPECT_EQ(read.out, ctlAsNobody({"get", "2", "108"}).out);
    EXPECT_THAT(ctlAsNobody({"status"}).out, HasSubstr("effect   on\n"));

    // The same user in the group audio changes them.
    ChildProcess::Result allowed = ctlAsNobody({"set", "2", "108", "3"}, "--groups=audio");
    EXPECT_EQ(0, allowed.exitCode) << allowed.err << owner.err();
    EXPECT_EQ("108 dialog-enhancer-amount: 3\n", allowed.out);
    EXPECT_EQ("effect off\n", ctlAsNobody({"off"}, "--groups=audio").out);
    EXPECT_EQ(0, owner.stop(SIGTERM)) << owner.err();
}

}  // namespace
}  // namespace vessa::test
