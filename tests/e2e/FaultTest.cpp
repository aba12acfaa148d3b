// vessad when things go wrong around it: killed in the middle of a save, its bus
// gone, its data directory read-only, a SIGHUP after the OEM file changed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "DaemonFixture.h"
#include "vessa/Client.h"

namespace vessa::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using namespace std::chrono_literals;

class VessadUnderFaults : public DaemonFixture {
  protected:
    const std::string database = dir + "/data/vendor/vessa/zan_sqlite3.db";

    // Dialog enhancer amount (108) of profiles 1 and 2, as a decoder client reads them
    // (a decoder's leaving saves nothing); -1 when unread.
    std::pair<int32_t, int32_t> amounts() {
        auto reader = client::Client::connect(bus.address(), {1, 9000});
        auto amount = [&](int profile) {
            return reader ? reader.value().setting(profile, 108).valueOr({-1}).at(0) : -1;
        };
        return {amount(1), amount(2)};
    }
};

// An ordinary client leaving saves the whole state; vessad is killed at a random
// moment around that save. After each restart the file is whole, and both changes
// are there or neither is.
TEST_F(VessadUnderFaults, AKillDuringASaveLeavesTheOldStateOrTheNewNeverAMixture) {
    std::mt19937 random(20261123);
    startService();
    std::pair<int32_t, int32_t> saved = amounts();
    for (int round = 1; round <= 50; ++round) {
        const int32_t value = round % 17;
        std::unique_ptr<PqsClient> client = connectClient();
        client->registerClient(0, 7000);
        for (int profile : {1, 2}) {
            Bytes blob = PqsProtocol::setParameter(profile, 108, {value});
            ASSERT_EQ(0, client->service().setAupParam(blob));
            ASSERT_TRUE(client->waitForUpdate(
                    [&](const Bytes& b) { return PqsProtocol::isEchoOf(b, blob); }, 5s));
        }
        std::thread leave([&client] {
            try {
                client->unregisterClient();
            } catch (const sdbus::Error&) {
                // killed before it answered
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
        vessad->stop(SIGKILL);
        leave.join();
        client.reset();
        ChildProcess::Result check = run({"/usr/bin/sqlite3", database, "PRAGMA integrity_check"});
        ASSERT_EQ("ok\n", check.out) << "round " << round << check.err;
        startService();
        std::pair<int32_t, int32_t> now = amounts();
        ASSERT_TRUE(now == saved || now == std::make_pair(value, value))
                << "round " << round << ": " << now.first << ", " << now.second;
        saved = now;
    }
    EXPECT_EQ(0, stopService());
}

TEST_F(VessadUnderFaults, LosingTheBusSavesAndExitsOne) {
    std::filesystem::create_directories(dir + "/lost");
    auto lost = std::make_unique<PrivateBus>(dir + "/lost");
    ChildProcess daemon(vessadArgs(*lost), dir);
    ASSERT_TRUE(lost->waitForOwner(kPqsServiceName)) << daemon.err();
    // A game client's leaving saves nothing: the change is only in memory.
    ChildProcess::Result set =
            run({VESSACTL_PATH, "--bus", lost->address(), "--type", "7", "set", "2", "108", "9"});
    ASSERT_EQ(0, set.exitCode) << set.err;
    lost.reset();  // the bus daemon is killed
    EXPECT_EQ(1, daemon.stop(0)) << daemon.err();
    EXPECT_THAT(daemon.err(), HasSubstr("): saving and exiting\n"));
    EXPECT_THAT(daemon.err(), Not(HasSubstr("terminate called")));

    startService();
    EXPECT_EQ("108 dialog-enhancer-amount: 9\n", ctl({"get", "2", "108"}));
    EXPECT_EQ(0, stopService());
}

// The OEM tuning of a selected device gets a new value; SIGHUP brings it to the effect,
// tells the clients as a reload does, and the service goes on.
TEST_F(VessadUnderFaults, SighupAppliesWhatTheOemFileSaysNow) {
    std::string oem = root.sampleOem();
    root.installOem(oem);
    startService();
    ChildProcess watcher(ctlArgs({"watch", "--all"}), dir);
    ASSERT_TRUE(watcher.waitForOutput("clients changed\n")) << watcher.err();
    ctl({"select", "bluetooth", "bt_neckband_x1"});
    EXPECT_THAT(ctl({"store", "--raw"}), HasSubstr("0x80 DSA 5\n"));

    const std::string angle = "<virtualizer-surround-speaker-angle value=\"5\"/>";
    size_t at = oem.find(angle, oem.find("<tuning name=\"oem_bluetooth_neckband\""));
    ASSERT_NE(std::string::npos, at);
    oem.replace(at, angle.size(), "<virtualizer-surround-speaker-angle value=\"33\"/>");
    root.installOem(oem);
    kill(vessad->pid(), SIGHUP);
    EXPECT_TRUE(watcher.waitForOutput("parameters changed (tuning reloaded)\n")) << watcher.out();
    EXPECT_THAT(ctl({"store", "--raw"}), HasSubstr("0x80 DSA 33\n"));
    EXPECT_THAT(ctl({"devices", "bluetooth"}), HasSubstr("* bt_neckband_x1\n"));
    EXPECT_EQ(0, watcher.stop(SIGINT));
    EXPECT_EQ(0, stopService()) << vessad->err();
}

// The file is read only at the first client, but a missing one is named at start;
// the service keeps serving, and SIGHUP loads the file once it is there.
TEST_F(VessadUnderFaults, AMissingDefaultTuningFileIsNamedAtStartAndLoadedByAReload) {
    const std::string content = readFile(root.defaultFile);
    ASSERT_EQ(0, unlink(root.defaultFile.c_str()));
    startService();
    const std::string warning = "default tuning file " + root.defaultFile +
                                " cannot be read (No such file or directory)";
    EXPECT_TRUE(eventually([&] { return vessad->err().find(warning) != std::string::npos; },
                           std::chrono::seconds(10)))
            << vessad->err();
    EXPECT_NE(0, run(ctlArgs({"profiles"})).exitCode);
    root.dir.write(SxContextManager::kDefaultTuningFile, content);
    kill(vessad->pid(), SIGHUP);
    EXPECT_TRUE(eventually(
            [&] { return run(ctlArgs({"profiles"})).out.find("2 Music\n") != std::string::npos; },
            std::chrono::seconds(10)));
    EXPECT_EQ(0, stopService());
}

// Saves that fail are reported: in the log, with the file, and by vessactl status.
TEST_F(VessadUnderFaults, SavesToADirectoryThatCannotBeWrittenAreReported) {
    startService();
    ctl({"status"});  // the first client fills the database
    ASSERT_EQ(0, stopService());
    const std::string data = dir + "/data/vendor/vessa";
    Args args = vessadArgs(bus);
    if (getuid() == 0) {
        // Root writes through any mode: the directory is mounted read-only instead, in
        // a mount namespace of vessad's own.
        args.insert(args.begin(), {"/usr/bin/unshare", "-m", "/bin/sh", "-c",
                                   "mount --bind -r \"$0\" \"$0\" && exec \"$@\"", data});
    } else {
        chmod(data.c_str(), 0555);
    }
    vessad = std::make_unique<ChildProcess>(args, dir);
    ASSERT_TRUE(bus.waitForOwner(kPqsServiceName)) << vessad->err();
    EXPECT_THAT(ctl({"status"}), Not(HasSubstr("warning")));
    ctl({"off"});  // saved at once, or tried
    EXPECT_THAT(ctl({"status"}),
                HasSubstr("warning: settings not saved: attempt to write a readonly database\n"));
    EXPECT_THAT(vessad->err(), HasSubstr("Settings not saved to " + database +
                                         ": attempt to write a readonly database"));
    EXPECT_EQ(0, stopService());
    chmod(data.c_str(), 0755);
}

// vessactl watch says when the service leaves; with --follow it waits and registers again.
TEST_F(VessadUnderFaults, WatchSaysWhenTheServiceLeavesAndFollowsItBack) {
    startService();
    ChildProcess plain(ctlArgs({"watch", "--all"}), dir);
    ChildProcess follow(ctlArgs({"watch", "--follow", "--all", "--json"}), dir);
    ASSERT_TRUE(plain.waitForOutput("clients changed\n")) << plain.err();
    ASSERT_TRUE(follow.waitForOutput("\"kind\":\"clients-changed\"")) << follow.err();
    ASSERT_EQ(0, stopService());
    EXPECT_EQ(1, plain.stop(0));
    EXPECT_THAT(plain.err(), HasSubstr("vessactl: the vessa service left the bus at "));

    startService();
    EXPECT_TRUE(eventually(
            [&] { return follow.err().find("registered again") != std::string::npos; }, 10s))
            << follow.err();
    // Updates arrive decoded, one JSON object per line.
    ctl({"set", "Music", "ieq-amount", "12"});
    ASSERT_TRUE(follow.waitForOutput("setting-changed")) << follow.out();
    EXPECT_EQ(0, follow.stop(SIGINT));
    std::string out = follow.out();
    std::string last = out.substr(out.rfind('{', out.find("setting-changed")));
    nlohmann::json update = nlohmann::json::parse(last.substr(0, last.find('\n')));
    EXPECT_EQ(2, update["profile"]);
    EXPECT_EQ("ieq-amount", update["setting"]["name"]);
    EXPECT_EQ(std::vector<int>{12}, update["values"].get<std::vector<int>>());
    EXPECT_EQ(23u, update["time"].get<std::string>().size());
    EXPECT_EQ(0, stopService());
}

}  // namespace
}  // namespace vessa::test
