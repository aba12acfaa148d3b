#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "FakeClient.h"
#include "ServiceTestSupport.h"
#include "platform/LogCapture.h"
#include "service/FourCC.h"
#include "service/VessaManagerService.h"
#include "storage/Provider.h"

namespace android {
namespace {

using test::blob;
using test::FakeClient;
using test::query;
using vessa::LogCapture;

constexpr const char* kTag = "VessaManagerService";

vessa::test::SampleRootEnvironment* const gEnvironment = &test::serviceRoot();

int32_t wordOf(const std::vector<uint8_t>& bytes, size_t index) {
    int32_t word = 0;
    if (bytes.size() >= (index + 1) * 4) memcpy(&word, bytes.data() + index * 4, 4);
    return word;
}

std::string dumpOf(VessaManagerService& service) {
    char path[] = "/tmp/vessa-dump-XXXXXX";
    int fd = mkstemp(path);
    service.dump(fd, {});
    lseek(fd, 0, SEEK_SET);
    std::string text(4096, '\0');
    ssize_t n = read(fd, text.data(), text.size());
    close(fd);
    unlink(path);
    text.resize(n > 0 ? static_cast<size_t>(n) : 0);
    return text;
}

class ServiceTest : public ::testing::Test {
  protected:
    ServiceTest() : service(new VessaManagerService()) {}

    // Registers and waits until the registration notice has gone round.
    void registerAndSettle(const sp<FakeClient>& client, int type, uint32_t uid) {
        size_t before = client->updateCount();
        service->registerClient(client, type, uid);
        ASSERT_TRUE(client->waitForUpdates(before + 1));
    }
    // Posts a blob and returns what the given client was sent for it.
    std::vector<uint8_t> apply(const sp<FakeClient>& client, std::vector<uint8_t> request) {
        size_t before = client->updateCount();
        EXPECT_EQ(0, service->setAupParam(request.data(), request.size()));
        EXPECT_TRUE(client->waitForUpdates(before + 1));
        return client->updates().back();
    }
    std::vector<int32_t> ask(uint32_t command, int32_t a, int32_t b, size_t words = 4) {
        std::vector<uint8_t> in = query(command, a, b);
        std::vector<int32_t> out(words, -7);
        EXPECT_EQ(0, service->getAupParam(in.data(), in.size(), out.data(), words * 4));
        return out;
    }

    sp<VessaManagerService> service;
};

// Runs first: nothing has registered yet, so the manager is not initialised.
TEST_F(ServiceTest, AnswersNeutrallyBeforeTheFirstRegistration) {
    LogCapture log;
    EXPECT_EQ(0, service->getIntParam(fourCC("DVLA")));
    EXPECT_EQ(-1, service->getIntParam(fourCC("DDSA")));
    EXPECT_EQ(-19, service->getIntParam(fourCC("DTFV")));
    EXPECT_EQ(-1, service->getIntParam(fourCC("XXXX")));
    EXPECT_EQ(2, service->getIntParam(fourCC("CHCT")));
    EXPECT_EQ(-1, service->getIntParam(fourCC("LCTP")));
    EXPECT_EQ(-1000, service->getIntParam(fourCC("LCTM")));
    EXPECT_EQ(2, service->getIntParam(fourCC("ADEV")));
    EXPECT_GE(service->getIntParam(fourCC("LCTM")), 0);
    std::vector<uint8_t> on = blob({0, 0, 1});
    EXPECT_EQ(-19, service->setAupParam(on.data(), on.size()));
    int32_t out = 0;
    EXPECT_EQ(-19, service->getAupParam(on.data(), on.size(), &out, sizeof(out)));
    EXPECT_EQ("", service->getProfileName(0));
    EXPECT_TRUE(log.contains(kTag, "getProfileName SxManager doesn't initialize!"));
    EXPECT_EQ("", service->getSelectedTuningDevice(0));
    EXPECT_FALSE(service->getAupEnabled());
    EXPECT_EQ(
            "VessaManagerService Information dump:\n"
            "ZAN Status : off\n"
            "Profile ID : -1\n"
            "Profile IEQ Preset : off\n"
            "Dialog Enhance state : off\n"
            "Is Mono Speaker : false\n",
            dumpOf(*service));
}

TEST_F(ServiceTest, RegistrationKeysDecoderCountsAndGameClient) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 5000);
    EXPECT_EQ(std::vector<uint8_t>(blob({-1, 0})), ui->updates().back());
    EXPECT_TRUE(ui->linked());

    LogCapture log;
    sp<FakeClient> decoder = new FakeClient();
    sp<FakeClient> clash = new FakeClient();
    registerAndSettle(decoder, 2, 1000);
    size_t notices = decoder->updateCount();
    service->registerClient(clash, 1, 1001);  // same key 1002: ignored, notice still sent
    ASSERT_TRUE(decoder->waitForUpdates(notices + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag, "register uid already existing 0x3ea"));
    EXPECT_FALSE(clash->linked());
    EXPECT_EQ(1, service->getIntParam(fourCC("DCCP")));
    EXPECT_EQ(1, service->getIntParam(fourCC("LCTP")));

    sp<FakeClient> codec = new FakeClient();
    registerAndSettle(codec, 3, 7000);
    EXPECT_EQ(3, service->getIntParam(fourCC("LCTP")));
    service->unregisterClient(codec, 3, 7000);
    service->unregisterClient(decoder, 2, 1000);
    EXPECT_EQ(0, service->getIntParam(fourCC("DCCP")));
    EXPECT_EQ(3, service->getIntParam(fourCC("LCTP")));
    EXPECT_FALSE(service->hasDecCP());

    sp<FakeClient> game = new FakeClient();
    registerAndSettle(game, 7, 8000);
    EXPECT_EQ(1, service->getIntParam(fourCC("GDEA")));
    service->unregisterClient(game, 7, 8000);
    EXPECT_EQ(0, service->getIntParam(fourCC("GDEA")));
    EXPECT_TRUE(log.contains(kTag, "Game AUP registered status: 0"));

    log.clear();
    service->unregisterClient(game, 7, 8000);
    // Other threads log too: look for the refusal among all lines.
    bool refused = false;
    for (const LogCapture::Line& line : log.linesWithTag(kTag)) {
        refused |=
                line.priority == ANDROID_LOG_ERROR &&
                line.message.find("uid 8007 does not exist in Vessa Server") != std::string::npos;
    }
    EXPECT_TRUE(refused);
    service->registerClient(nullptr, 0, 1);
    EXPECT_TRUE(log.contains(kTag, "registerClient got NULL client"));
    service->unregisterClient(ui, 0, 5000);
}

TEST_F(ServiceTest, BlobCommandsReachEveryClientWithTheAppliedValue) {
    sp<FakeClient> ui = new FakeClient();
    sp<FakeClient> other = new FakeClient();
    registerAndSettle(ui, 0, 100);
    registerAndSettle(other, 0, 200);

    size_t otherSeen = other->updateCount();
    std::vector<uint8_t> sent = apply(ui, blob({0 << 24, 99, 5}));
    EXPECT_EQ(5, wordOf(sent, 1));
    EXPECT_EQ(3u, sent.size() / 4);
    ASSERT_TRUE(other->waitForUpdates(otherSeen + 1));
    EXPECT_EQ(sent, other->updates().back());
    EXPECT_TRUE(service->getAupEnabled());
    EXPECT_EQ(1, ask(0, 0, 0)[0]);
    EXPECT_TRUE(vessa::Provider().isAupOn());  // command 0 persists at once

    EXPECT_EQ(0, wordOf(apply(ui, blob({0 << 24, 99, 0})), 1));
    EXPECT_FALSE(vessa::Provider().isAupOn());

    EXPECT_EQ(3, wordOf(apply(ui, blob({10 << 24, 0, 3})), 1));
    EXPECT_EQ(3, ask(10, 0, 0)[0]);
    EXPECT_EQ(3, vessa::Provider().getSelectedProfile());
    EXPECT_EQ("Voice", service->getProfileName(3));
    EXPECT_EQ("", service->getProfileName(5));

    // Command 1: clamped write of id 107; word 1 is left as sent.
    EXPECT_EQ(42, wordOf(apply(ui, blob({1 << 24, 42, 3, 107, 20})), 1));
    EXPECT_EQ(std::vector<int32_t>({16, -7, -7, -7}), ask(1, 107, 3));
    // Command 2: profile and port in the nibbles of byte 8.
    apply(ui, blob({2 << 24, 0, 3, 3, 108, 5}));
    EXPECT_EQ(5, ask(2, 108, 0x33)[0]);
    EXPECT_EQ(1, ask(11, 3, 0)[0]);
    // A command-1 blob without values sets nothing but is still broadcast.
    EXPECT_EQ(16u, apply(ui, blob({1 << 24, 0, 3, 107})).size());
    EXPECT_EQ(16, ask(1, 107, 3)[0]);
    // Nor does a port-addressed one: the IEQ preset stays as it was.
    int32_t preset = ask(2, 104, 0x33)[0];
    apply(ui, blob({2 << 24, 0, 3, 3, 104}));
    EXPECT_EQ(preset, ask(2, 104, 0x33)[0]);

    EXPECT_EQ(3, wordOf(apply(ui, blob({12 << 24, 0, 3})), 1));
    EXPECT_EQ(0, ask(11, 3, 0)[0]);
    EXPECT_EQ(5, ask(3, 0, 0)[0]);

    // A two-value answer does not fit one word: nothing is copied.
    int32_t small = -7;
    std::vector<uint8_t> gains = query(1, 110, 3);
    LogCapture log;
    EXPECT_EQ(0, service->getAupParam(gains.data(), gains.size(), &small, sizeof(small)));
    EXPECT_EQ(-7, small);
    EXPECT_TRUE(
            log.contains(kTag, "packAndReceiveParam : Invalid output length, not enough buffer!"));

    service->unregisterClient(other, 0, 200);
    service->unregisterClient(ui, 0, 100);
}

TEST_F(ServiceTest, UnregisteringAnOrdinaryClientSavesTheWholeState) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 300);
    apply(ui, blob({1 << 24, 0, 4, 108, 9}));
    auto storedAmount = [] {
        vessa::SxContextManager reader;
        return reader.getSxContext()->getProfileParameter(4, vessa::Endpoint::SPEAKER,
                                                          vessa::Parameter::DIALOG_ENHANCER_AMOUNT);
    };
    EXPECT_NE(std::vector<int>({9}), storedAmount());  // command 1 alone does not persist
    sp<FakeClient> decoder = new FakeClient();
    registerAndSettle(decoder, 1, 301);
    service->unregisterClient(decoder, 1, 301);
    EXPECT_NE(std::vector<int>({9}), storedAmount());  // a decoder leaving saves nothing
    service->unregisterClient(ui, 0, 300);
    EXPECT_EQ(std::vector<int>({9}), storedAmount());
}

TEST_F(ServiceTest, DeadClientsAreRemovedAndFailedSendsLogged) {
    sp<FakeClient> ui = new FakeClient();
    sp<FakeClient> decoder = new FakeClient();
    registerAndSettle(ui, 0, 400);
    registerAndSettle(decoder, 4, 500);
    EXPECT_EQ(1, service->getIntParam(fourCC("DCCP")));
    LogCapture log;
    decoder->die();
    EXPECT_EQ(0, service->getIntParam(fourCC("DCCP")));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "binderDied : client uid 504"));
    size_t seen = decoder->updateCount();
    // Clients are called in key order: once the later one has its update, the
    // failed call to the first has been logged.
    sp<FakeClient> later = new FakeClient();
    registerAndSettle(later, 0, 450);
    size_t laterSeen = later->updateCount();
    ui->failSends(true);
    apply(ui, blob({10 << 24, 0, 0}));
    ASSERT_TRUE(later->waitForUpdates(laterSeen + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Call client failed on 400"));
    EXPECT_EQ(seen, decoder->updateCount());
    service->unregisterClient(later, 0, 450);
    ui->failSends(false);
    service->unregisterClient(ui, 0, 400);
}

TEST_F(ServiceTest, TuningDevicesVersionAndReload) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 600);
    int port = static_cast<int>(vessa::Port::HDMI);
    int length = service->getAvailableTuningDevicesLen(port);
    std::vector<char> names(length + 4, '#');
    service->getAvailableTuningDevices(port, names.data(), length + 4);
    EXPECT_EQ("default_hdmi hdmi_avr     ", std::string(names.begin(), names.end()));
    LogCapture log;
    std::vector<char> tooSmall(length - 1, '#');
    service->getAvailableTuningDevices(port, tooSmall.data(), length - 1);
    EXPECT_EQ(std::string(length - 1, '#'), std::string(tooSmall.begin(), tooSmall.end()));
    EXPECT_TRUE(log.contains(kTag,
                             "getAvailableTuningDevices not enough buffer for transferring "
                             "device name lists for port 1"));

    size_t before = ui->updateCount();
    service->setSelectedTuningDevice(port, "hdmi_avr", 8);
    ASSERT_TRUE(ui->waitForUpdates(before + 1));
    EXPECT_EQ(std::vector<uint8_t>({'h', 'd', 'm', 'i', '_', 'a', 'v', 'r'}), ui->updates().back());
    EXPECT_EQ("hdmi_avr", service->getSelectedTuningDevice(port));
    service->setSelectedTuningDevice(7, "x", 1);
    EXPECT_TRUE(log.contains(kTag, "setSelectedTuningDevice invalid port number, 7"));

    EXPECT_EQ(3003000, service->getDefaultXmlFormatVersion());
    EXPECT_EQ(3003000, service->getIntParam(fourCC("DTFV")));
    EXPECT_EQ(999000001, VessaManagerService::parseFormatVersion("999.0.1"));
    for (const char* malformed : {"1.2", "1.2.3.4", "1..3", "1.2.", "-1.2.3", "1.2.3 "}) {
        EXPECT_EQ(-22, VessaManagerService::parseFormatVersion(malformed)) << malformed;
    }
    EXPECT_EQ(-22, VessaManagerService::parseFormatVersion("1.4294967296.3"));
    EXPECT_TRUE(log.contains(kTag, "XML version 1.2147483647.3 is invalid!\n"));
    EXPECT_TRUE(log.contains(kTag, "XML version 1..3 is not in Major.Minor.Maintain format!"));

    // Reloading without an OEM file fails and tells nobody; with one, every
    // client hears of it with an empty update.
    before = ui->updateCount();
    service->setIntParam(fourCC("RLTF"), 0);
    gEnvironment->root->installOem(gEnvironment->root->sampleOem());
    service->setIntParam(fourCC("RLTF"), 123);
    EXPECT_EQ(before + 1, ui->updateCount());
    EXPECT_TRUE(ui->updates().back().empty());
    EXPECT_GT(service->getAvailableTuningDevicesLen(port), 0);
    service->unregisterClient(ui, 0, 600);
}

TEST_F(ServiceTest, DumpAfterInitialisation) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 700);
    apply(ui, blob({0 << 24, 0, 1}));
    apply(ui, blob({10 << 24, 0, 1}));
    // Profile 1 of the sample: warm IEQ and the dialog enhancer on, on a
    // stereo speaker tuning.
    EXPECT_EQ(
            "VessaManagerService Information dump:\n"
            "ZAN Status : on\n"
            "Profile ID : 1\n"
            "Profile IEQ Preset : warm\n"
            "Dialog Enhance state : on\n"
            "Is Mono Speaker : false\n",
            dumpOf(*service));
    service->unregisterClient(ui, 0, 700);
}

// A reader that does not read, or has gone, costs the service nothing.
TEST_F(ServiceTest, DumpNeverWaitsForItsReaderNorDiesOfAClosedOne) {
    LogCapture log;
    int fds[2];
    ASSERT_EQ(0, pipe2(fds, O_NONBLOCK));
    std::string filler(1 << 20, 'x');
    size_t filled = 0;
    for (ssize_t n; (n = write(fds[1], filler.data(), filler.size())) > 0;) filled += n;
    fcntl(fds[1], F_SETFL, 0);  // a blocking descriptor, as a client would send
    service->dump(fds[1], {});  // returns with the pipe still full
    close(fds[1]);
    std::string text;
    char chunk[4096];
    for (ssize_t n; (n = read(fds[0], chunk, sizeof(chunk))) != 0;) {
        if (n > 0) text.append(chunk, static_cast<size_t>(n));
    }
    close(fds[0]);
    EXPECT_EQ(filled, text.find("VessaManagerService Information dump:\n"));

    ASSERT_EQ(0, pipe(fds));
    close(fds[0]);
    service->dump(fds[1], {});  // EPIPE, and the process lives on
    close(fds[1]);
    EXPECT_TRUE(
            log.contains(ANDROID_LOG_ERROR, kTag,
                         "dump: cannot write to fd " + std::to_string(fds[1]) + ": Broken pipe"));
}

TEST_F(ServiceTest, MalformedBuffersNeverBreakTheService) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 800);
    LogCapture log;
    std::vector<uint8_t> huge(64 * 1024 + 1, 0);
    EXPECT_EQ(-22, service->setAupParam(huge.data(), huge.size()));
    EXPECT_EQ(-22, service->getAupParam(huge.data(), huge.size(), huge.data(), 4));

    // Random blobs and queries are the fuzz harnesses' work (tests/fuzz).
    service->setSelectedTuningDevice(0, nullptr, -5);
    service->setSelectedTuningDevice(0, nullptr, 10);
    service->getAvailableTuningDevices(0, nullptr, 100);
    EXPECT_EQ(2, service->getIntParam(fourCC("CHCT")));
    EXPECT_EQ(5, ask(3, 0, 0)[0]);
    service->unregisterClient(ui, 0, 800);
}

}  // namespace
}  // namespace android
