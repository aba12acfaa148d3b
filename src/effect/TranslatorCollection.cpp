#define LOG_TAG "TranslatorCollection"

#include "effect/TranslatorCollection.h"

#include <log/log.h>

namespace vessa {

TranslatorCollection::TranslatorCollection() {
    LOG_ALWAYS_FATAL_IF(kAllTranslators.size() != kNumTranslators, "%zu translators, not %zu",
                        kAllTranslators.size(), kNumTranslators);
    for (Translator* translator : kAllTranslators) {
        const int rank = static_cast<int>(mByRank.size());
        mByRank.push_back(translator);
        for (Parameter p : translator->getSrcParams()) mClaims.emplace(p, Claim{translator, rank});
    }
}

Translator* TranslatorCollection::getTranslator(Parameter p) {
    return mClaims[p].translator;
}

int TranslatorCollection::getRank(Parameter p) {
    return mClaims[p].rank;
}

}  // namespace vessa
