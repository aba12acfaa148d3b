#include "effect/TranslatorCollection.h"

namespace vessa {

TranslatorCollection::TranslatorCollection() {
    for (Translator* translator : kAllTranslators) {
        for (Parameter p : translator->getSrcParams()) mTranslators.emplace(p, translator);
    }
}

Translator* TranslatorCollection::getTranslator(Parameter p) {
    return mTranslators[p];
}

}  // namespace vessa
