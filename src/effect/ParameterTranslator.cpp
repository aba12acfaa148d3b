#include "effect/ParameterTranslator.h"

namespace vessa {

ParameterTranslator::~ParameterTranslator() = default;

void ParameterTranslator::setSource(ParameterValues* source, Endpoint endpoint, bool mono) {
    mSource = source;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter p) {
    const int rank = sTranslatorCollection->getRank(p);
    if (rank >= 0) mPending.set(static_cast<size_t>(rank));
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    if (mSource != nullptr && mPending.any()) {
        for (size_t rank = 0; rank < mPending.size(); ++rank) {
            if (!mPending.test(rank)) continue;
            sTranslatorCollection->atRank(rank)->aupTranslate(cmd, *mSource, mEndpoint, mMono);
        }
    }
    mPending.reset();
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    if (mSource != nullptr) {
        for (Parameter p : mSource->getValidParams()) onParameterChanged(p);
    }
    translatePending(cmd);
}

}  // namespace vessa
