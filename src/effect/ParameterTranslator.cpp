#include "effect/ParameterTranslator.h"

namespace vessa {

ParameterTranslator::~ParameterTranslator() = default;

void ParameterTranslator::setSource(ParameterValues* source, Endpoint endpoint, bool mono) {
    mSource = source;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter p) {
    Translator* translator = sTranslatorCollection->getTranslator(p);
    if (translator != nullptr) mPending.insert(translator);
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    if (mSource != nullptr) {
        for (Translator* translator : mPending) {
            translator->aupTranslate(cmd, *mSource, mEndpoint, mMono);
        }
    }
    mPending.clear();
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    if (mSource != nullptr) {
        for (Parameter p : mSource->getValidParams()) onParameterChanged(p);
    }
    translatePending(cmd);
}

}  // namespace vessa
