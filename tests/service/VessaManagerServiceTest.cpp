#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "ServiceTestSupport.h"
#include "platform/LogCapture.h"
#include "protocol/SettingsTable.h"
#include "storage/Provider.h"

namespace android {
namespace {

using namespace test;
using vessa::LogCapture;
using vessa::SettingsTable;

constexpr const char* kTag = "VessaManagerService";
constexpr int kHdmi = static_cast<int>(vessa::Port::HDMI);

vessa::test::SampleRootEnvironment* const gEnvironment = &serviceRoot();

int32_t answerOf(const Bytes& update) {
    return PqsProtocol::readBlob(update.data(), update.size()).answer;
}

TEST_F(AFreshService, AnswersNeutrallyUntilItsFirstClient) {
    LogCapture log;
    EXPECT_EQ(0, intParam(IntCode::VOLUME_LEVELER_AMOUNT));
    EXPECT_EQ(-1, intParam(IntCode::SURROUND_SPEAKER_ANGLE));
    EXPECT_EQ(-ENODEV, intParam(IntCode::FORMAT_VERSION));
    EXPECT_EQ(-1, service->getIntParam(vessa::client::fourCC("XXXX")));
    EXPECT_EQ(2, intParam(IntCode::CHANNEL_COUNT));
    EXPECT_EQ(-1, intParam(IntCode::LAST_DECODER_TYPE));
    EXPECT_EQ(-1000, intParam(IntCode::LAST_DEVICE_QUERY));
    EXPECT_EQ(2, intParam(IntCode::ACTIVE_DEVICE));
    EXPECT_GE(intParam(IntCode::LAST_DEVICE_QUERY), 0);  // the query above was recorded
    Bytes on = PqsProtocol::onOff(true);
    EXPECT_EQ(-ENODEV, service->setAupParam(on.data(), on.size()));
    int32_t out = 0;
    EXPECT_EQ(-ENODEV, service->getAupParam(on.data(), on.size(), &out, sizeof(out)));
    EXPECT_EQ("", service->getProfileName(0));
    EXPECT_TRUE(log.contains(kTag, "getProfileName SxManager doesn't initialize!"));
    EXPECT_EQ("", service->getSelectedTuningDevice(0));
    EXPECT_FALSE(service->getAupEnabled());
    EXPECT_EQ(
            "VessaManagerService Information dump:\nZAN Status : off\nProfile ID : -1\n"
            "Profile IEQ Preset : off\nDialog Enhance state : off\nIs Mono Speaker : false\n",
            dumpText());
}

// A reader that does not read, or has gone, costs the service nothing.
TEST_F(AFreshService, DumpsWithoutWaitingForAFullPipeNorDyingOfAClosedOne) {
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

TEST_F(AServiceWithAClient, SendsItTheRegistrationNoticeAndWatchesItsDeath) {
    EXPECT_EQ(PqsProtocol::registrationNotice(), ui->updates().back());
    EXPECT_TRUE(ui->linked());
}

TEST_F(AServiceWithAClient, CountsDecoderClientsAndRemembersTheLastDecoderType) {
    sp<FakeClient> decoder = new FakeClient(), codec = new FakeClient();
    registerAndSettle(decoder, 2, 1000);
    EXPECT_EQ(1, intParam(IntCode::DECODER_CLIENT));
    registerAndSettle(codec, 3, 7000);
    EXPECT_EQ(3, intParam(IntCode::LAST_DECODER_TYPE));
    service->unregisterClient(codec, 3, 7000);
    service->unregisterClient(decoder, 2, 1000);
    EXPECT_EQ(0, intParam(IntCode::DECODER_CLIENT));
    EXPECT_EQ(3, intParam(IntCode::LAST_DECODER_TYPE));
    EXPECT_FALSE(service->hasDecCP());
}

TEST_F(AServiceWithAClient, TracksTheGameClientUntilItLeaves) {
    LogCapture log;
    sp<FakeClient> game = new FakeClient();
    registerAndSettle(game, 7, 8000);
    EXPECT_EQ(1, intParam(IntCode::GAME_CLIENT));
    service->unregisterClient(game, 7, 8000);
    EXPECT_EQ(0, intParam(IntCode::GAME_CLIENT));
    EXPECT_TRUE(log.contains(kTag, "Game AUP registered status: 0"));
}

TEST_F(AServiceWithAClient, RefusesATakenKeyAnUnknownClientAndANullOne) {
    LogCapture log;
    sp<FakeClient> decoder = new FakeClient(), clash = new FakeClient();
    registerAndSettle(decoder, 2, 1000);
    size_t notices = decoder->updateCount();
    service->registerClient(clash, 1, 1001);  // the same key, 1002: ignored, the notice still sent
    ASSERT_TRUE(decoder->waitForUpdates(notices + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag, "register uid already existing 0x3ea"));
    EXPECT_FALSE(clash->linked());
    service->unregisterClient(decoder, 2, 1000);
    service->unregisterClient(decoder, 2, 1000);
    bool refused = false;  // other threads log too: look among all lines
    for (const LogCapture::Line& line : log.linesWithTag(kTag)) {
        refused |=
                line.priority == ANDROID_LOG_ERROR &&
                line.message.find("uid 1002 does not exist in Vessa Server") != std::string::npos;
    }
    EXPECT_TRUE(refused);
    service->registerClient(nullptr, 0, 1);
    EXPECT_TRUE(log.contains(kTag, "registerClient got NULL client"));
}

TEST_F(AServiceWithAClient, EchoesTheSwitchWithItsValueToEveryClientAndSavesIt) {
    sp<FakeClient> other = new FakeClient();
    registerAndSettle(other, 0, 200);
    size_t otherSeen = other->updateCount();
    Bytes blob = PqsProtocol::onOff(true);
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 99);
    Bytes sent = apply(ui, blob);
    EXPECT_EQ(1, answerOf(sent));
    EXPECT_EQ(blob.size(), sent.size());
    ASSERT_TRUE(other->waitForUpdates(otherSeen + 1));
    EXPECT_EQ(sent, other->updates().back());
    EXPECT_EQ(1, askWord(PqsProtocol::kQueryOnOff));
    EXPECT_TRUE(vessa::Provider().isAupOn());
    EXPECT_EQ(0, answerOf(apply(ui, PqsProtocol::onOff(false))));
    EXPECT_FALSE(vessa::Provider().isAupOn());
    service->unregisterClient(other, 0, 200);
}

TEST_F(AServiceWithAClient, SelectsAProfileSavesItAndResetsOne) {
    EXPECT_EQ(3, answerOf(apply(ui, PqsProtocol::selectProfile(3))));
    EXPECT_EQ(3, askWord(PqsProtocol::kQuerySelectedProfile));
    EXPECT_EQ(3, vessa::Provider().getSelectedProfile());
    EXPECT_EQ("Voice", service->getProfileName(3));
    EXPECT_EQ("", service->getProfileName(5));
    apply(ui, PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {5}));
    EXPECT_EQ(1, askWord(PqsProtocol::kQueryProfileModified, 3));
    EXPECT_EQ(3, answerOf(apply(ui, PqsProtocol::resetProfile(3))));
    EXPECT_EQ(0, askWord(PqsProtocol::kQueryProfileModified, 3));
    EXPECT_EQ(5, askWord(PqsProtocol::kQueryProfileCount));
}

TEST_F(AServiceWithAClient, ClampsASettingAndLeavesTheAnswerSlotAsSent) {
    Bytes blob = PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {20});
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 42);
    EXPECT_EQ(42, answerOf(apply(ui, blob)));
    EXPECT_EQ(
            std::vector<int32_t>({16, -7, -7}),
            ask(PqsProtocol::query(PqsProtocol::kQueryParameter, 3, SettingsTable::kIeqAmount), 3));
    // Without values nothing is set, but every client still hears of it.
    EXPECT_EQ(16u, apply(ui, PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {})).size());
    EXPECT_EQ(16, askWord(PqsProtocol::kQueryParameter, 3, SettingsTable::kIeqAmount));
}

TEST_F(AServiceWithAClient, AddressesOnePortThroughThePackedQuery) {
    apply(ui, PqsProtocol::setPortParameter(3, 3, SettingsTable::kDialogEnhancerAmount, {5}));
    EXPECT_EQ(5, ask(PqsProtocol::portQuery(3, 3, SettingsTable::kDialogEnhancerAmount))[0]);
    Bytes presetQuery = PqsProtocol::portQuery(3, 3, SettingsTable::kIeqPreset);
    int32_t preset = ask(presetQuery)[0];
    apply(ui, PqsProtocol::setPortParameter(3, 3, SettingsTable::kIeqPreset, {}));
    EXPECT_EQ(preset, ask(presetQuery)[0]);
}

TEST_F(AServiceWithAClient, NeverCopiesALongAnswerIntoAOneWordBuffer) {
    LogCapture log;
    EXPECT_EQ(std::vector<int32_t>({-7}),
              ask(PqsProtocol::query(PqsProtocol::kQueryParameter, 3, SettingsTable::kGeqGains)));
    EXPECT_TRUE(
            log.contains(kTag, "packAndReceiveParam : Invalid output length, not enough buffer!"));
}

TEST_F(AServiceWithAClient, SavesTheWholeStateOnlyWhenAnOrdinaryClientLeaves) {
    apply(ui, PqsProtocol::setParameter(4, SettingsTable::kDialogEnhancerAmount, {9}));
    auto storedAmount = [] {
        vessa::SxContextManager reader;
        return reader.getSxContext()->getProfileParameter(4, vessa::Endpoint::SPEAKER,
                                                          vessa::Parameter::DIALOG_ENHANCER_AMOUNT);
    };
    EXPECT_NE(std::vector<int>({9}), storedAmount());  // a setting alone does not persist
    sp<FakeClient> decoder = new FakeClient(), second = new FakeClient();
    registerAndSettle(decoder, 1, 301);
    service->unregisterClient(decoder, 1, 301);
    EXPECT_NE(std::vector<int>({9}), storedAmount());
    registerAndSettle(second, 0, 302);
    service->unregisterClient(second, 0, 302);
    EXPECT_EQ(std::vector<int>({9}), storedAmount());
}

TEST_F(AServiceWithAClient, ForgetsADeadClientAndLogsAFailedSend) {
    sp<FakeClient> decoder = new FakeClient(), later = new FakeClient();
    registerAndSettle(decoder, 4, 500);
    LogCapture log;
    decoder->die();
    EXPECT_EQ(0, intParam(IntCode::DECODER_CLIENT));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "binderDied : client uid 504"));
    size_t seen = decoder->updateCount();
    // Clients are called in key order: once the later one has its update, the
    // failed call to the first has been logged.
    registerAndSettle(later, 0, 450);
    size_t laterSeen = later->updateCount();
    ui->failSends(true);
    Bytes select = PqsProtocol::selectProfile(0);
    service->setAupParam(select.data(), select.size());
    ASSERT_TRUE(later->waitForUpdates(laterSeen + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Call client failed on 100"));
    EXPECT_EQ(seen, decoder->updateCount());
    ui->failSends(false);
    service->unregisterClient(later, 0, 450);
}

TEST_F(AServiceWithAClient, ListsTuningDevicesOnlyIntoABufferLargeEnough) {
    int length = service->getAvailableTuningDevicesLen(kHdmi);
    std::vector<char> names(length + 4, '#');
    service->getAvailableTuningDevices(kHdmi, names.data(), length + 4);
    EXPECT_EQ("default_hdmi hdmi_avr     ", std::string(names.begin(), names.end()));
    LogCapture log;
    std::vector<char> tooSmall(length - 1, '#');
    service->getAvailableTuningDevices(kHdmi, tooSmall.data(), length - 1);
    EXPECT_EQ(std::string(length - 1, '#'), std::string(tooSmall.begin(), tooSmall.end()));
    EXPECT_TRUE(log.contains(kTag,
                             "getAvailableTuningDevices not enough buffer for transferring "
                             "device name lists for port 1"));
}

TEST_F(AServiceWithAClient, EchoesATuningSelectionAndRefusesABadPort) {
    size_t before = ui->updateCount();
    service->setSelectedTuningDevice(kHdmi, "hdmi_avr", 8);
    ASSERT_TRUE(ui->waitForUpdates(before + 1));
    EXPECT_EQ(Bytes({'h', 'd', 'm', 'i', '_', 'a', 'v', 'r'}), ui->updates().back());
    EXPECT_EQ("hdmi_avr", service->getSelectedTuningDevice(kHdmi));
    LogCapture log;
    service->setSelectedTuningDevice(7, "x", 1);
    EXPECT_TRUE(log.contains(kTag, "setSelectedTuningDevice invalid port number, 7"));
}

TEST_F(AServiceWithAClient, ReadsTheFormatVersionDigitByDigit) {
    EXPECT_EQ(3003000, intParam(IntCode::FORMAT_VERSION));
    EXPECT_EQ(999000001, VessaManagerService::parseFormatVersion("999.0.1"));
    LogCapture log;
    for (const char* malformed : {"1.2", "1.2.3.4", "1..3", "1.2.", "-1.2.3", "1.2.3 "}) {
        EXPECT_EQ(-EINVAL, VessaManagerService::parseFormatVersion(malformed)) << malformed;
    }
    EXPECT_EQ(-EINVAL, VessaManagerService::parseFormatVersion("1.4294967296.3"));
    EXPECT_TRUE(log.contains(kTag, "XML version 1.2147483647.3 is invalid!\n"));
    EXPECT_TRUE(log.contains(kTag, "XML version 1..3 is not in Major.Minor.Maintain format!"));
}

// Without an OEM file a reload fails and tells nobody; with one, every client
// hears of it through an empty update.
TEST_F(AServiceWithAClient, TellsItsClientsOfAReloadOnlyWhenItWorked) {
    size_t before = ui->updateCount();
    service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 0);
    gEnvironment->root->installOem(gEnvironment->root->sampleOem());
    service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 123);
    EXPECT_EQ(before + 1, ui->updateCount());
    EXPECT_TRUE(ui->updates().back().empty());
    EXPECT_GT(service->getAvailableTuningDevicesLen(kHdmi), 0);
}

// Profile 1 of the sample: warm IEQ and the dialog enhancer on, stereo speaker.
TEST_F(AServiceWithAClient, DumpsTheStateOfTheSelectedProfile) {
    apply(ui, PqsProtocol::onOff(true));
    apply(ui, PqsProtocol::selectProfile(1));
    EXPECT_EQ(
            "VessaManagerService Information dump:\nZAN Status : on\nProfile ID : 1\n"
            "Profile IEQ Preset : warm\nDialog Enhance state : on\nIs Mono Speaker : false\n",
            dumpText());
}

// Random blobs and queries are the fuzz harnesses' work (tests/fuzz).
TEST_F(AServiceWithAClient, RefusesOversizedBuffersAndSurvivesNullOnes) {
    LogCapture log;
    Bytes huge(64 * 1024 + 1, 0);
    EXPECT_EQ(-EINVAL, service->setAupParam(huge.data(), huge.size()));
    EXPECT_EQ(-EINVAL, service->getAupParam(huge.data(), huge.size(), huge.data(), 4));
    EXPECT_TRUE(log.contains(kTag, "setAupParam: 65537 bytes is over the 65536 byte limit"));
    service->setSelectedTuningDevice(0, nullptr, -5);
    service->setSelectedTuningDevice(0, nullptr, 10);
    service->getAvailableTuningDevices(0, nullptr, 100);
    EXPECT_EQ(5, askWord(PqsProtocol::kQueryProfileCount));
}

}  // namespace
}  // namespace android
