#pragma once

#include <map>
#include <set>

#include "effect/Translator.h"
#include "model/Parameter.h"

namespace vessa {

// Which translator reads which Parameter.
class TranslatorCollection {
  public:
    // Every translator of the program: the 57 simple ones and one of each
    // special class, created at start and never freed. Ordered by address,
    // which is their creation order (see TranslatorRegistry.cpp).
    static const std::set<Translator*> kAllTranslators;

    // Maps each source Parameter of kAllTranslators to its translator; when two
    // claim the same Parameter the first in set order keeps it.
    TranslatorCollection();

    // The translator of `p`, or null. An unmapped Parameter gets a null entry.
    Translator* getTranslator(Parameter p);

    // Number of entries, null ones included.
    size_t size() const { return mTranslators.size(); }

  private:
    std::map<Parameter, Translator*> mTranslators;
};

}  // namespace vessa
