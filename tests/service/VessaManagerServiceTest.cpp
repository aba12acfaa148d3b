#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
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

// A reader that does not read, or has gone, costs the dump nothing.
TEST_F(AFreshService, AnswersNeutrallyAndDumpsWithoutWaitingForAFullPipeNorDyingOfAClosedOne) {
    LogCapture log;
    EXPECT_EQ(0, intParam(IntCode::VOLUME_LEVELER_AMOUNT));
    EXPECT_EQ(-1, intParam(IntCode::SURROUND_SPEAKER_ANGLE));
    EXPECT_EQ(-ENODEV, intParam(IntCode::FORMAT_VERSION));
    EXPECT_EQ(-1, service->getIntParam(vessa::client::fourCC("XXXX")));
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
    const std::string dump =
            "VessaManagerService Information dump:\nZAN Status : off\nProfile ID : -1\n"
            "Profile IEQ Preset : off\nDialog Enhance state : off\nIs Mono Speaker : false\n";
    EXPECT_EQ(dump, dumpText());

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
    EXPECT_EQ(dump, text.substr(filled));
    ASSERT_EQ(0, pipe(fds));
    close(fds[0]);
    service->dump(fds[1], {});  // EPIPE, and the process lives on
    close(fds[1]);
    EXPECT_TRUE(
            log.contains(ANDROID_LOG_ERROR, kTag,
                         "dump: cannot write to fd " + std::to_string(fds[1]) + ": Broken pipe"));
}

// The table of clients is keyed by uid + type; decoders (1 to 4) are counted, and
// the game client (7) is tracked until it leaves. A taken key, an unknown client
// and a null one are refused. (The registration notice, the death link, and a
// client that dies being forgotten: the end-to-end tests, which kill one.)
TEST_F(AServiceWithAClient, CountsDecoderAndGameClientsRefusesBadOnesAndLogsAFailedSend) {
    LogCapture log;
    sp<FakeClient> decoder = new FakeClient(), codec = new FakeClient(), game = new FakeClient(),
                   clash = new FakeClient();
    registerAndSettle(decoder, 2, 1000);
    EXPECT_EQ(1, intParam(IntCode::DECODER_CLIENT));
    size_t notices = decoder->updateCount();
    service->registerClient(clash, 1, 1001);  // the decoder's key, 1002: ignored, still a notice
    ASSERT_TRUE(decoder->waitForUpdates(notices + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag, "register uid already existing 0x3ea"));
    EXPECT_EQ(nullptr, clash->recipient());
    registerAndSettle(codec, 3, 7000);
    registerAndSettle(game, 7, 8000);
    EXPECT_EQ(3, intParam(IntCode::LAST_DECODER_TYPE));
    EXPECT_EQ(1, intParam(IntCode::GAME_CLIENT));
    // Clients are called in key order: once the decoder (1002) has its update, the
    // failed call to the first (100) has been logged, and the others went on.
    ui->failSends(true);
    notices = decoder->updateCount();
    Bytes select = PqsProtocol::selectProfile(0);
    service->setAupParam(select.data(), select.size());
    ASSERT_TRUE(decoder->waitForUpdates(notices + 1));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Call client failed on 100"));
    ui->failSends(false);
    service->unregisterClient(codec, 3, 7000);
    service->unregisterClient(decoder, 2, 1000);
    service->unregisterClient(game, 7, 8000);
    EXPECT_EQ(0, intParam(IntCode::DECODER_CLIENT));
    EXPECT_EQ(3, intParam(IntCode::LAST_DECODER_TYPE));
    EXPECT_EQ(0, intParam(IntCode::GAME_CLIENT));
    service->unregisterClient(decoder, 2, 1000);
    char refusal[96];  // the line names the client by its address
    snprintf(refusal, sizeof(refusal),
             "unregisterClient() client %p, uid 1002 does not exist in Vessa Server",
             static_cast<void*>(decoder.get()));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, refusal));
    service->registerClient(nullptr, 0, 1);
    EXPECT_TRUE(log.contains(kTag, "registerClient got NULL client"));
}

// A command's answer goes back in its blob; the switch and the selected profile are
// saved at once. Profile 1 of the sample: warm IEQ and the dialog enhancer on,
// stereo speaker.
TEST_F(AServiceWithAClient, AnswersTheSwitchAndProfileCommandsSavesThemAndDumpsTheState) {
    Bytes blob = PqsProtocol::onOff(true);
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 99);
    Bytes sent = apply(ui, blob);
    EXPECT_EQ(1, answerOf(sent));
    EXPECT_EQ(blob.size(), sent.size());
    EXPECT_EQ(1, askWord(PqsProtocol::kQueryOnOff));
    EXPECT_TRUE(vessa::Provider().isAupOn());
    EXPECT_EQ(3, answerOf(apply(ui, PqsProtocol::selectProfile(3))));
    EXPECT_EQ(3, vessa::Provider().getSelectedProfile());
    EXPECT_EQ("", service->getProfileName(5));  // one past the last
    apply(ui, PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {5}));
    EXPECT_EQ(1, askWord(PqsProtocol::kQueryProfileModified, 3));
    EXPECT_EQ(3, answerOf(apply(ui, PqsProtocol::resetProfile(3))));
    EXPECT_EQ(0, askWord(PqsProtocol::kQueryProfileModified, 3));
    apply(ui, PqsProtocol::selectProfile(1));
    EXPECT_EQ(
            "VessaManagerService Information dump:\nZAN Status : on\nProfile ID : 1\n"
            "Profile IEQ Preset : warm\nDialog Enhance state : on\nIs Mono Speaker : false\n",
            dumpText());
    EXPECT_EQ(0, answerOf(apply(ui, PqsProtocol::onOff(false))));
    EXPECT_FALSE(vessa::Provider().isAupOn());
}

// A setting's answer slot goes back as sent; a query never writes past the
// client's buffer, and oversized ones are refused. (Random blobs and queries are
// the fuzz harnesses' work, tests/fuzz.)
TEST_F(AServiceWithAClient, ClampsASettingAddressesOnePortAndKeepsToTheClientsBuffers) {
    LogCapture log;
    Bytes blob = PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {20});
    PqsProtocol::writeAnswer(blob.data(), blob.size(), 42);
    EXPECT_EQ(42, answerOf(apply(ui, blob)));
    EXPECT_EQ(
            std::vector<int32_t>({16, -7, -7}),
            ask(PqsProtocol::query(PqsProtocol::kQueryParameter, 3, SettingsTable::kIeqAmount), 3));
    // Without values nothing is set, but every client still hears of it.
    EXPECT_EQ(16u, apply(ui, PqsProtocol::setParameter(3, SettingsTable::kIeqAmount, {})).size());
    EXPECT_EQ(16, askWord(PqsProtocol::kQueryParameter, 3, SettingsTable::kIeqAmount));

    apply(ui, PqsProtocol::setPortParameter(3, 3, SettingsTable::kDialogEnhancerAmount, {5}));
    EXPECT_EQ(5, ask(PqsProtocol::portQuery(3, 3, SettingsTable::kDialogEnhancerAmount))[0]);
    Bytes presetQuery = PqsProtocol::portQuery(3, 3, SettingsTable::kIeqPreset);
    int32_t preset = ask(presetQuery)[0];
    apply(ui, PqsProtocol::setPortParameter(3, 3, SettingsTable::kIeqPreset, {}));
    EXPECT_EQ(preset, ask(presetQuery)[0]);

    EXPECT_EQ(std::vector<int32_t>({-7}),
              ask(PqsProtocol::query(PqsProtocol::kQueryParameter, 3, SettingsTable::kGeqGains)));
    EXPECT_TRUE(
            log.contains(kTag, "packAndReceiveParam : Invalid output length, not enough buffer!"));
    Bytes huge(64 * 1024 + 1, 0);
    EXPECT_EQ(-EINVAL, service->setAupParam(huge.data(), huge.size()));
    EXPECT_EQ(-EINVAL, service->getAupParam(huge.data(), huge.size(), huge.data(), 4));
    EXPECT_TRUE(log.contains(kTag, "setAupParam: 65537 bytes is over the 65536 byte limit"));
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

// Null buffers and lengths out of range are refused without harm. Without an OEM
// file a reload fails and tells nobody; with one, every client hears of it through
// an empty update.
TEST_F(AServiceWithAClient, ListsTuningDevicesIntoABufferLargeEnoughEchoesASelectionAndAReload) {
    int length = service->getAvailableTuningDevicesLen(kHdmi);
    std::vector<char> names(length + 4, '#');
    service->getAvailableTuningDevices(kHdmi, names.data(), length + 4);
    EXPECT_EQ("default_hdmi hdmi_avr     ", std::string(names.begin(), names.end()));
    LogCapture log;
    std::vector<char> tooSmall(length - 1, '#');
    service->getAvailableTuningDevices(kHdmi, tooSmall.data(), length - 1);
    EXPECT_EQ(std::vector<char>(length - 1, '#'), tooSmall);
    EXPECT_TRUE(log.contains(kTag,
                             "getAvailableTuningDevices not enough buffer for transferring "
                             "device name lists for port 1"));
    service->getAvailableTuningDevices(0, nullptr, 100);
    service->setSelectedTuningDevice(0, nullptr, -5);
    service->setSelectedTuningDevice(0, nullptr, 10);
    service->setSelectedTuningDevice(7, "x", 1);
    EXPECT_TRUE(log.contains(kTag, "setSelectedTuningDevice invalid port number, 7"));
    size_t before = ui->updateCount();
    service->setSelectedTuningDevice(kHdmi, "hdmi_avr", 8);
    EXPECT_TRUE(ui->waitForUpdate(Bytes({'h', 'd', 'm', 'i', '_', 'a', 'v', 'r'}), before));
    EXPECT_EQ("hdmi_avr", service->getSelectedTuningDevice(kHdmi));

    before = ui->updateCount();
    service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 0);
    gEnvironment->root->installOem(gEnvironment->root->sampleOem());
    service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 123);
    EXPECT_EQ(before + 1, ui->updateCount());
    EXPECT_TRUE(ui->updates().back().empty());
    EXPECT_EQ(length, service->getAvailableTuningDevicesLen(kHdmi));  // the default file's too
}

TEST_F(AFreshService, ReadsTheFormatVersionDigitByDigit) {
    EXPECT_EQ(999000001, VessaManagerService::parseFormatVersion("999.0.1"));
    LogCapture log;
    for (const char* malformed :
         {"1.2", "1.2.3.4", "1..3", "1.2.", "-1.2.3", "1.2.3 ", "1.4294967296.3"}) {
        EXPECT_EQ(-EINVAL, VessaManagerService::parseFormatVersion(malformed)) << malformed;
    }
    EXPECT_TRUE(log.contains(kTag, "XML version 1.2147483647.3 is invalid!\n"));
    EXPECT_TRUE(log.contains(kTag, "XML version 1..3 is not in Major.Minor.Maintain format!"));
}

}  // namespace
}  // namespace android
