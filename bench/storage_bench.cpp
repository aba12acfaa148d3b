// Cost of refilling the settings database from a full tuning and merging an OEM
// file: what a start-up with a changed default tuning file pays before the service
// can answer, as one transaction and as two.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/FileSystemRoot.h"
#include "storage/Provider.h"

namespace {

using namespace vessa;

constexpr int kNumProfiles = 4;
constexpr int kNumTunings = 50;
constexpr int kBands = 20;

const Port kPorts[] = {Port::INTERNAL_SPEAKER, Port::HDMI,      Port::MIRACAST,
                       Port::HEADPHONE,        Port::BLUETOOTH, Port::USB};

// Switches and scalars hold one value; band lists hold twenty.
std::vector<int> values(Parameter p, int seed) {
    static const ParamSet kLists =
            makeParamSet({1,  2,  3,  4,  5,  13, 16, 17, 18, 19, 24, 25, 36,
                          38, 46, 50, 53, 54, 55, 56, 60, 61, 68, 70, 71, 81});
    const int base = toInt(p) * 11 + seed * 97;
    if (kLists.count(p) == 0) return {base % 3 - 1};
    std::vector<int> list(kBands);
    for (int i = 0; i < kBands; ++i) list[i] = (i % 2 ? -1 : 1) * (base + i * 250);
    return list;
}

void fill(ParameterValues& record, int seed) {
    for (Parameter p : record.getValidParams()) {
        if (p != Parameter::IEQ_ID) record.set(p, values(p, seed));
    }
}

struct FullTuning {
    std::vector<std::unique_ptr<IeqPreset>> ieqPresets;
    std::vector<std::unique_ptr<GeqPreset>> geqPresets;
    std::vector<std::unique_ptr<Profile>> profiles;
    std::vector<std::unique_ptr<ProfileEndpoint>> endpoints;
    std::vector<std::unique_ptr<Tuning>> tunings;
    std::vector<std::unique_ptr<DeviceTuning>> deviceTunings;

    FullTuning() {
        for (int t = 0; t < kNumPresetTypes; ++t) {
            ieqPresets.push_back(std::make_unique<IeqPreset>(static_cast<PresetType>(t)));
            fill(*ieqPresets.back(), t);
        }
        for (int id = 0; id < kNumProfiles; ++id) {
            geqPresets.push_back(std::make_unique<GeqPreset>(id));
            fill(*geqPresets.back(), id);
            profiles.push_back(
                    std::make_unique<Profile>(id, "profile " + std::to_string(id), id == 3));
            fill(*profiles.back(), id);
            for (int e = 0; e < kNumEndpoints; ++e) {
                endpoints.push_back(std::make_unique<ProfileEndpoint>(id, static_cast<Endpoint>(e),
                                                                      static_cast<PresetType>(e)));
                fill(*endpoints.back(), id * 3 + e);
            }
        }
        for (int t = 0; t < kNumTunings; ++t) {
            const Port port = kPorts[t % 6];
            const std::string name = std::string(portName(port)) + "_tuning_" + std::to_string(t);
            tunings.push_back(std::make_unique<Tuning>(name, endpointForPortName(portName(port)),
                                                       port == Port::INTERNAL_SPEAKER));
            fill(*tunings.back(), t);
            const std::string device = t < 6 ? std::string("default_") + portName(port)
                                             : "device_" + std::to_string(t);
            deviceTunings.push_back(std::make_unique<DeviceTuning>(device, portName(port), name));
        }
    }

    // The OEM merge of a start: its tunings replaced by the same ones again.
    void merge(Provider& provider) const {
        provider.beginTransaction();
        provider.clearOemTunings();
        provider.clearOemDeviceTunings();
        for (size_t t = 0; t < tunings.size(); t += 5) {
            provider.create(tunings[t].get(), Provider::kOemName);
        }
        provider.commitTransaction();
    }

    void populate(Provider& provider) const {
        provider.beginTransaction();
        provider.clear();
        provider.initDatabase();
        for (const auto& p : ieqPresets) provider.create(p.get());
        for (const auto& p : geqPresets) provider.create(p.get());
        for (const auto& p : profiles) provider.create(p.get());
        for (const auto& p : endpoints) provider.create(p.get());
        for (const auto& t : tunings) provider.create(t.get(), Provider::kDefaultName);
        for (const auto& d : deviceTunings) provider.create(d.get(), Provider::kDefaultName);
        for (Port port : kPorts) {
            provider.setDeviceTuning(portName(port), std::string("default_") + portName(port));
        }
        provider.setDefaultXmlSignature("1700000000");
        provider.setDefaultXmlFormatVersion("3.2.1");
        provider.commitTransaction();
    }
};

// A start's fill: the refill from the default file, then the OEM merge. With
// `together`, both in one outer transaction, as a start now makes them; without, as
// two commits, as it made them before.
void BM_PopulateFullTuning(benchmark::State& state) {
    const bool together = state.range(0) != 0;
    std::string pattern =
            (std::filesystem::temp_directory_path() / "vessa-storage-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        state.SkipWithError("mkdtemp failed");
        return;
    }
    const std::string previousRoot = FileSystemRoot::get();
    FileSystemRoot::set(pattern);
    {
        const FullTuning data;
        Provider provider;
        for (auto _ : state) {
            if (together) provider.beginTransaction();
            data.populate(provider);
            data.merge(provider);
            if (together) provider.commitTransaction();
        }
        state.counters["tunings"] = kNumTunings;
        // The last device's tuning must read back whole, or the figure means nothing.
        provider.loadDeviceTuningsForPort(kPorts[(kNumTunings - 1) % 6]);
        const Tuning* last =
                provider.loadTuningForDevice("device_" + std::to_string(kNumTunings - 1));
        if (last == nullptr || !last->equals(*data.tunings.back())) {
            state.SkipWithError("the tunings were not all stored");
        }
    }
    FileSystemRoot::set(previousRoot);
    std::filesystem::remove_all(pattern);
}
BENCHMARK(BM_PopulateFullTuning)
        ->Arg(0)
        ->Arg(1)
        ->ArgName("together")
        ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
