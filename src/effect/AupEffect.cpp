#define LOG_TAG "AupEffect"

#include "effect/AupEffect.h"

#include <log/log.h>

#include <cerrno>

#include "platform/AupParamStore.h"
#include "platform/EffectParamParser.h"

namespace vessa {

namespace {
constexpr int kSendResult = -EINVAL;
}  // namespace

AupEffect::AupEffect(int sessionId, android::String16 name) {}

int AupEffect::send(int command, std::vector<int>& buffer) {
    sendSharedStore(buffer.data(), static_cast<unsigned int>(buffer.size() * sizeof(int)));
    return kSendResult;
}

void AupEffect::sendSharedStore(void* data, unsigned int size) {
    EffectParamParser parser(data, static_cast<int>(size));
    if (!parser.validate()) {
        ALOGE("%s() Invalid data for setting parameter values.", "sendSharedStore");
        return;
    }
    parser.begin();
    // Held for the whole batch: no client's setParam or commitChange can land
    // between its entries, so the effect sees all of it at once or none.
    AupParamStore::Batch batch(AupParamStore::getInstance());
    // The store is looked up for every entry and once more for the end of the
    // batch; that last look-up is the one that commits.
    AupParamStore* store = nullptr;
    for (;;) {
        const bool hasEntry = parser.next();
        store = &AupParamStore::getInstance();
        if (!hasEntry) break;
        store->setParam(parser.getDevice(), parser.getParameterId(), parser.getValues(),
                        parser.getCount());
    }
    store->commitChange();
}

int AupEffect::receive(int command, std::vector<int>& out) {
    return 0;
}

int AupEffect::setEnabled(bool enabled) {
    return 0;
}

}  // namespace vessa
