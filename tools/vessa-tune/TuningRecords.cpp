#include "TuningRecords.h"

#include <algorithm>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "model/Vocabulary.h"
#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

namespace vessa {

namespace {

using Json = TuningRecords::Json;

Json parametersJson(const ParameterValues& record) {
    Json parameters = Json::object();
    for (const auto& [parameter, values] : record.values()) {
        parameters[parameterName(parameter)] = values;
    }
    return parameters;
}

void flattenInto(TuningRecords::Flat* flat, const std::string& key, const ParameterValues& record) {
    auto& entry = (*flat)[key];
    for (const auto& [parameter, values] : record.values()) {
        entry[parameterName(parameter)] = values;
    }
}

// The records of a set in a stable order, whatever their addresses.
template <typename Record, typename Less>
std::vector<Record*> sorted(const std::set<Record*>& records, Less less) {
    std::vector<Record*> list(records.begin(), records.end());
    std::sort(list.begin(), list.end(), [&](Record* a, Record* b) { return less(*a, *b); });
    return list;
}

EqSeries curve(const std::string& name, const ParameterValues& record, Parameter frequency,
               Parameter gain) {
    EqSeries series{name, {}, {}};
    auto f = record.values().find(frequency);
    auto g = record.values().find(gain);
    if (f == record.values().end() || g == record.values().end()) return series;
    const size_t n = std::min(f->second.size(), g->second.size());
    for (size_t i = 0; i < n; ++i) {
        series.frequencies.push_back(f->second[i]);
        series.gains.push_back(g->second[i]);
    }
    return series;
}

}  // namespace

TuningRecords::TuningRecords() = default;
TuningRecords::~TuningRecords() = default;

bool TuningRecords::load(const std::string& path, std::string* error) {
    mParser = std::make_unique<TuningFileParser>();
    if (mParser->setTuningFile(path) != 0 || mParser->getDeviceData() == nullptr) {
        *error = "cannot read " + path + " as a tuning file";
        mParser.reset();
        return false;
    }
    return true;
}

Json TuningRecords::toJson(int onlyProfile, const std::string& onlyTuning) const {
    DeviceData& data = *mParser->getDeviceData();
    Json document = {{"formatVersion", data.getFormatVersion()},
                     {"toolVersion", data.getToolVersion()}};
    const bool allProfiles = onlyTuning.empty();
    Json profiles = Json::array();
    auto endpoints = sorted(data.getProfileEndpoints(), [](auto& a, auto& b) {
        return std::make_pair(a.getProfileId(), a.getEndpoint()) <
               std::make_pair(b.getProfileId(), b.getEndpoint());
    });
    auto geqs = sorted(data.getGeqPresets(),
                       [](auto& a, auto& b) { return a.getProfileId() < b.getProfileId(); });
    for (Profile* profile : sorted(data.getProfiles(), [](auto&a, auto&b) {
             return a.getProfileId() < b.getProfileId();
         })) {
        const int id = profile->getProfileId();
        if (!allProfiles || (onlyProfile >= 0 && id != onlyProfile)) continue;
        Json entry = {{"id", id},
                      {"name", profile->getName()},
                      {"mobility", profile->isMobility()},
                      {"parameters", parametersJson(*profile)},
                      {"endpoints", Json::array()}};
        for (ProfileEndpoint* endpoint : endpoints) {
            if (endpoint->getProfileId() != id) continue;
            entry["endpoints"].push_back(
                    {{"endpoint", endpointName(endpoint->getEndpoint())},
                     {"ieqPreset", presetTypeName(endpoint->getSelectedIeqPreset())},
                     {"parameters", parametersJson(*endpoint)}});
        }
        for (GeqPreset* geq : geqs) {
            if (geq->getProfileId() == id) entry["geqPreset"] = parametersJson(*geq);
        }
        profiles.push_back(entry);
    }
    document["profiles"] = profiles;
    if (allProfiles && onlyProfile < 0) {
        Json ieqs = Json::array();
        for (IeqPreset* ieq : sorted(data.getIeqPresets(),
                                     [](auto&a, auto&b) { return a.getType() < b.getType(); })) {
            ieqs.push_back({{"preset", presetTypeName(ieq->getType())},
                            {"parameters", parametersJson(*ieq)}});
        }
        document["ieqPresets"] = ieqs;
    }
    Json tunings = Json::array();
    auto devices = sorted(data.getDeviceTunings(), [](auto& a, auto& b) {
        return std::make_pair(a.getTuning(), a.getDevice()) <
               std::make_pair(b.getTuning(), b.getDevice());
    });
    for (Tuning* tuning :
         sorted(data.getTunings(), [](auto&a, auto&b) { return a.getName() < b.getName(); })) {
        if (onlyProfile >= 0 || (!onlyTuning.empty() && tuning->getName() != onlyTuning)) continue;
        Json list = Json::array();
        for (DeviceTuning* device : devices) {
            if (device->getTuning() != tuning->getName()) continue;
            list.push_back({{"device", device->getDevice()}, {"port", device->getPort()}});
        }
        tunings.push_back({{"name", tuning->getName()},
                           {"endpoint", endpointName(tuning->getEndpoint())},
                           {"mono", tuning->isMono()},
                           {"devices", list},
                           {"parameters", parametersJson(*tuning)}});
    }
    document["tunings"] = tunings;
    return document;
}

TuningRecords::Flat TuningRecords::flatten() const {
    DeviceData& data = *mParser->getDeviceData();
    Flat flat;
    auto profileKey = [](int id) { return "profile " + std::to_string(id); };
    for (Profile* profile : data.getProfiles()) {
        const std::string key = profileKey(profile->getProfileId());
        flattenInto(&flat, key, *profile);
        flat[key]["(name)"] = profile->getName();
        flat[key]["(mobility)"] = profile->isMobility();
    }
    for (ProfileEndpoint* endpoint : data.getProfileEndpoints()) {
        const std::string key = profileKey(endpoint->getProfileId()) + ", endpoint " +
                                endpointName(endpoint->getEndpoint());
        flattenInto(&flat, key, *endpoint);
        flat[key]["(ieq preset)"] = presetTypeName(endpoint->getSelectedIeqPreset());
    }
    for (GeqPreset* geq : data.getGeqPresets()) {
        flattenInto(&flat, profileKey(geq->getProfileId()) + ", graphic EQ", *geq);
    }
    for (IeqPreset* ieq : data.getIeqPresets()) {
        flattenInto(&flat, std::string("IEQ preset ") + presetTypeName(ieq->getType()), *ieq);
    }
    for (Tuning* tuning : data.getTunings()) {
        const std::string key = "tuning " + tuning->getName();
        flattenInto(&flat, key, *tuning);
        flat[key]["(endpoint)"] = endpointName(tuning->getEndpoint());
        flat[key]["(mono)"] = tuning->isMono();
    }
    for (DeviceTuning* device : data.getDeviceTunings()) {
        flat["device " + device->getDevice() + " on " + device->getPort()]["(tuning)"] =
                device->getTuning();
    }
    return flat;
}

Json TuningRecords::diff(const Flat& before, const Flat& after) {
    Json changes = Json::array();
    auto values = [](const Flat& flat, const std::string& record,
                     const std::string& parameter) -> const Json* {
        auto r = flat.find(record);
        if (r == flat.end()) return nullptr;
        auto p = r->second.find(parameter);
        return p == r->second.end() ? nullptr : &p->second;
    };
    std::map<std::string, std::set<std::string>> keys;
    for (const Flat* flat : {&before, &after}) {
        for (const auto& [record, parameters] : *flat) {
            keys[record];
            for (const auto& entry : parameters) keys[record].insert(entry.first);
        }
    }
    for (const auto& [record, parameters] : keys) {
        const bool onlyAfter = before.count(record) == 0;
        const bool onlyBefore = after.count(record) == 0;
        if (onlyAfter || onlyBefore) {
            changes.push_back({{"record", record}, {"change", onlyAfter ? "added" : "removed"}});
            continue;
        }
        for (const std::string& parameter : parameters) {
            const Json* old = values(before, record, parameter);
            const Json* now = values(after, record, parameter);
            if (old != nullptr && now != nullptr && *old == *now) continue;
            changes.push_back({{"record", record},
                               {"parameter", parameter},
                               {"before", old != nullptr ? *old : Json(nullptr)},
                               {"after", now != nullptr ? *now : Json(nullptr)}});
        }
    }
    return changes;
}

std::vector<EqSeries> TuningRecords::geqCurves(int onlyProfile) const {
    DeviceData& data = *mParser->getDeviceData();
    std::map<int, std::string> names;
    for (Profile* profile : data.getProfiles()) names[profile->getProfileId()] = profile->getName();
    std::vector<EqSeries> curves;
    for (GeqPreset* geq : sorted(data.getGeqPresets(), [](auto&a, auto&b) {
             return a.getProfileId() < b.getProfileId();
         })) {
        if (onlyProfile >= 0 && geq->getProfileId() != onlyProfile) continue;
        EqSeries series = curve(names[geq->getProfileId()], *geq, Parameter::GEQ_FREQUENCY,
                                Parameter::GEQ_GAIN);
        if (!series.frequencies.empty()) curves.push_back(series);
    }
    return curves;
}

std::vector<EqSeries> TuningRecords::ieqCurves() const {
    std::vector<EqSeries> curves;
    for (IeqPreset* ieq : sorted(mParser->getDeviceData()->getIeqPresets(),
                                 [](auto&a, auto&b) { return a.getType() < b.getType(); })) {
        EqSeries series = curve(presetTypeName(ieq->getType()), *ieq, Parameter::IEQ_FREQUENCY,
                                Parameter::IEQ_TARGET);
        if (!series.frequencies.empty()) curves.push_back(series);
    }
    return curves;
}

}  // namespace vessa
