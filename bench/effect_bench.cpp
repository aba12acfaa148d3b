// Cost of sending settings to the effect: a full resend of one output device
// (what a tuning reload or a new effect endpoint pays per device) and a single
// graphic-EQ change (what a slider move pays), each built into one batch and
// written through the effect endpoint into the parameter store.
#include <benchmark/benchmark.h>

#include <vector>

#include "effect/AupEffect.h"
#include "effect/ParameterTranslator.h"
#include "effect/SetParamCommand.h"
#include "model/DeviceParameters.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/ProfileEndpoint.h"
#include "model/ProfileParameters.h"
#include "model/Tuning.h"

namespace {

using namespace vessa;

constexpr int kBands = 20;
constexpr AndroidDevice kSpeaker = kDeviceOutSpeaker;

// Band tables of a real tuning: one value per band (or per matrix cell).
const ParamSet& bandTables() {
    static const ParamSet tables = makeParamSet({1,  2,  3,  4,  5,  13, 16, 17, 18, 19, 36, 38, 46,
                                                 50, 51, 53, 54, 55, 56, 60, 61, 68, 70, 71, 81});
    return tables;
}

std::vector<int> bandValues(int first, int step) {
    std::vector<int> out;
    for (int band = 0; band < kBands; ++band) out.push_back(first + band * step);
    return out;
}

// Every Parameter the record may hold gets a plausible value: a 20-entry table
// for band parameters, a scalar otherwise.
void populate(ParameterValues& record) {
    for (Parameter p : record.getValidParams()) {
        if (p == Parameter::IEQ_ID) continue;
        const int n = toInt(p);
        record.set(p, bandTables().count(p) ? bandValues(n * 10, n % 7 + 1) : std::vector<int>{n});
    }
}

// A speaker with every translator active: stereo, complex EQ, sibilance
// suppression and bass MBDRC on.
struct SpeakerDevice {
    Tuning tuning{"speaker-bench", Endpoint::SPEAKER, false};
    ProfileEndpoint endpoint{0, Endpoint::SPEAKER, PresetType::BALANCED};
    IeqPreset ieq{PresetType::BALANCED};
    ParameterTranslator translator;
    DeviceParameters view{&translator};

    SpeakerDevice() {
        populate(tuning);
        tuning.set(Parameter::OUTPUT_CHANNELS, {2});
        tuning.set(Parameter::COMPLEX_EQUALIZER_ENABLE, {1});
        tuning.set(Parameter::REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {1});
        tuning.set(Parameter::BASS_MBDRC_ENABLE, {1});
        populate(endpoint);
        populate(ieq);
        view.setTuning(tuning);
        view.setProfileEndpoint(endpoint);
        view.setIeqPreset(ieq);
    }
};

void BM_FullDeviceResend(benchmark::State& state) {
    SpeakerDevice device;
    AupEffect effect(0, android::String16("bench"));
    int entries = 0;
    size_t words = 0;
    for (auto _ : state) {
        SetParamCommand cmd(kDeviceOutDefault);
        cmd.setDeviceId(kSpeaker);
        device.translator.translateAll(cmd);
        benchmark::DoNotOptimize(cmd.execute(effect));
        entries = cmd.getEntryCount();
        words = cmd.buffer().size();
    }
    state.counters["entries"] = entries;
    state.counters["words"] = static_cast<double>(words);
}
BENCHMARK(BM_FullDeviceResend);

void BM_FullDeviceTranslateOnly(benchmark::State& state) {
    SpeakerDevice device;
    for (auto _ : state) {
        SetParamCommand cmd(kDeviceOutDefault);
        cmd.setDeviceId(kSpeaker);
        device.translator.translateAll(cmd);
        benchmark::DoNotOptimize(cmd.buffer().data());
    }
}
BENCHMARK(BM_FullDeviceTranslateOnly);

void BM_GeqChange(benchmark::State& state) {
    ParameterTranslator translator;
    ProfileParameters view(&translator);
    GeqPreset presets[2] = {GeqPreset(1), GeqPreset(1)};
    for (int i = 0; i < 2; ++i) {
        presets[i].set(Parameter::GEQ_FREQUENCY, bandValues(32, 1000));
        presets[i].set(Parameter::GEQ_GAIN, bandValues(i, 1));
    }
    AupEffect effect(0, android::String16("bench"));
    int which = 0;
    for (auto _ : state) {
        which = 1 - which;
        view.setGeqPreset(presets[which]);
        SetParamCommand cmd(kDeviceOutDefault);
        cmd.setDeviceId(kDeviceOutDefault);
        translator.translatePending(cmd);
        benchmark::DoNotOptimize(cmd.execute(effect));
    }
}
BENCHMARK(BM_GeqChange);

}  // namespace

BENCHMARK_MAIN();
