#define LOG_TAG "ParameterAdapter"

#include "manager/ParameterAdapter.h"

#include <log/log.h>

#include "protocol/SettingsTable.h"

namespace vessa {

using Strategy = ParameterAdapter::ParameterStrategy;

Strategy::ParameterStrategy(int min, int max, Parameter parameter, int length)
    : mMin(min), mMax(max), mParameter(parameter), mLength(length) {}

Strategy::~ParameterStrategy() = default;

void Strategy::setParameter(SxContext*, int, Endpoint, std::vector<int>&) {}

std::vector<int> Strategy::getParameter(SxContext*, int, Endpoint) {
    return {};
}

void Strategy::clamp(std::vector<int>& values) const {
    for (int& v : values) {
        if (v < mMin) v = mMin;
        if (v > mMax) v = mMax;
    }
}

void ParameterAdapter::ProfileParameterStrategy::setParameter(SxContext* context, int profileId,
                                                              std::vector<int>& values) {
    clamp(values);
    context->setProfileParameter(profileId, mParameter, values);
}

std::vector<int> ParameterAdapter::ProfileParameterStrategy::getParameter(SxContext* context,
                                                                          int profileId) {
    return context->getProfileParameter(profileId, mParameter);
}

void ParameterAdapter::ProfileEndpointParameterStrategy::setParameter(SxContext* context,
                                                                      int profileId,
                                                                      std::vector<int>& values) {
    clamp(values);
    for (Endpoint e : {Endpoint::SPEAKER, Endpoint::HEADPHONE, Endpoint::OTHER}) {
        context->setProfileParameter(profileId, e, mParameter, values);
    }
}

void ParameterAdapter::ProfileEndpointParameterStrategy::setParameter(SxContext* context,
                                                                      int profileId,
                                                                      Endpoint endpoint,
                                                                      std::vector<int>& values) {
    clamp(values);
    context->setProfileParameter(profileId, endpoint, mParameter, values);
}

std::vector<int> ParameterAdapter::ProfileEndpointParameterStrategy::getParameter(
        SxContext* context, int profileId) {
    Endpoint speaker = context->getProfileEndpoint(profileId, Endpoint::SPEAKER)->getEndpoint();
    return context->getProfileParameter(profileId, speaker, mParameter);
}

std::vector<int> ParameterAdapter::ProfileEndpointParameterStrategy::getParameter(
        SxContext* context, int profileId, Endpoint endpoint) {
    return context->getProfileParameter(profileId, endpoint, mParameter);
}

void ParameterAdapter::ProfileGeqParameterStrategy::setParameter(SxContext* context, int profileId,
                                                                 std::vector<int>& values) {
    clamp(values);
    context->setProfileGeqParameter(profileId, mParameter, values);
}

std::vector<int> ParameterAdapter::ProfileGeqParameterStrategy::getParameter(SxContext* context,
                                                                             int profileId) {
    return context->getProfileGeqParameter(profileId, mParameter);
}

ParameterAdapter::VirtualizerStrategy::VirtualizerStrategy(int min, int max, Parameter parameter,
                                                           int length, Endpoint endpoint, int mode)
    : ParameterStrategy(min, max, parameter, length), mEndpoint(endpoint), mMode(mode) {}

void ParameterAdapter::VirtualizerStrategy::setParameter(SxContext* context, int profileId,
                                                         std::vector<int>& values) {
    context->setProfileParameter(profileId, mEndpoint, mParameter, values);
}

std::vector<int> ParameterAdapter::VirtualizerStrategy::getParameter(SxContext* context,
                                                                     int profileId) {
    return context->getProfileParameter(profileId, mEndpoint, mParameter);
}

ParameterAdapter::ParameterAdapter(SxContext* context) : mContext(context) {
    const std::vector<SettingsTable::Row>& rows = SettingsTable::rows();
    mStrategies.resize(rows.back().setting.id - kFirstId + 1);  // id 100 stays a hole
    for (const SettingsTable::Row& row : rows) {
        const client::Setting& s = row.setting;
        std::unique_ptr<ParameterStrategy>& slot = mStrategies[s.id - kFirstId];
        switch (s.level) {
            case client::Setting::Level::PROFILE:
                slot = std::make_unique<ProfileParameterStrategy>(s.min, s.max, row.parameter,
                                                                  s.length);
                break;
            case client::Setting::Level::ENDPOINT:
                slot = std::make_unique<ProfileEndpointParameterStrategy>(s.min, s.max,
                                                                          row.parameter, s.length);
                break;
            case client::Setting::Level::GEQ:
                slot = std::make_unique<ProfileGeqParameterStrategy>(s.min, s.max, row.parameter,
                                                                     s.length);
                break;
            case client::Setting::Level::FIXED_ENDPOINT:
                // The mode is the virtualizer's output mode for that endpoint.
                slot = std::make_unique<VirtualizerStrategy>(
                        s.min, s.max, row.parameter, s.length, row.endpoint,
                        row.endpoint == Endpoint::HEADPHONE ? 3 : 0);
                break;
        }
    }
}

ParameterAdapter::~ParameterAdapter() = default;

ParameterAdapter::ParameterStrategy* ParameterAdapter::lookup(int id, bool* pastEnd) const {
    int index = id - kFirstId;
    *pastEnd = index >= static_cast<int>(mStrategies.size());
    // Ids below the table are refused too, so a stray id never reads outside it.
    if (*pastEnd || index < 0) return nullptr;
    return mStrategies[index].get();
}

ParameterAdapter::ParameterStrategy* ParameterAdapter::lookupOrLog(int id) const {
    bool pastEnd = false;
    ParameterStrategy* strategy = lookup(id, &pastEnd);
    if (strategy == nullptr) {
        ALOGE("param id %d not supported", id);
    }
    return strategy;
}

int ParameterAdapter::getParameterLength(int id) {
    ParameterStrategy* strategy = lookupOrLog(id);
    return strategy == nullptr ? 1 : strategy->getParamLength();
}

bool ParameterAdapter::findParameter(int id, Parameter* parameter) const {
    bool pastEnd = false;
    ParameterStrategy* strategy = lookup(id, &pastEnd);
    if (strategy == nullptr) return false;
    *parameter = strategy->getParameter();
    return true;
}

// Writes past the table end are dropped without a word; only an unsupported
// id inside the table is reported. Clients rely on that quiet refusal.
ParameterAdapter::ParameterStrategy* ParameterAdapter::lookupForWrite(int id) const {
    bool pastEnd = false;
    ParameterStrategy* strategy = lookup(id, &pastEnd);
    if (strategy == nullptr && !pastEnd) {
        ALOGE("param id %d not supported", id);
    }
    return strategy;
}

void ParameterAdapter::setParameter(int profileId, int id, std::vector<int>& values) {
    if (ParameterStrategy* strategy = lookupForWrite(id)) {
        strategy->setParameter(mContext, profileId, values);
    }
}

std::vector<int> ParameterAdapter::getParameter(int profileId, int id) {
    ParameterStrategy* strategy = lookupOrLog(id);
    return strategy == nullptr ? std::vector<int>() : strategy->getParameter(mContext, profileId);
}

void ParameterAdapter::setProfileEndpointParameter(int profileId, Endpoint endpoint, int id,
                                                   std::vector<int>& values) {
    if (ParameterStrategy* strategy = lookupForWrite(id)) {
        strategy->setParameter(mContext, profileId, endpoint, values);
    }
}

std::vector<int> ParameterAdapter::getProfileEndpointParameter(int profileId, Endpoint endpoint,
                                                               int id) {
    ParameterStrategy* strategy = lookupOrLog(id);
    return strategy == nullptr ? std::vector<int>()
                               : strategy->getParameter(mContext, profileId, endpoint);
}

}  // namespace vessa
