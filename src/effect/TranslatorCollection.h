#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <vector>

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
    // Their number; a translator's rank is its place in kAllTranslators, so a set
    // of translators fits in a bitset of this size and reads back in set order.
    static constexpr size_t kNumTranslators = 69;

    // Maps each source Parameter of kAllTranslators to its translator; when two
    // claim the same Parameter the first in set order keeps it.
    TranslatorCollection();

    // The translator of `p`, or null. An unmapped Parameter gets a null entry.
    Translator* getTranslator(Parameter p);
    // The rank of the translator of `p`, or -1; looks `p` up as getTranslator does.
    int getRank(Parameter p);
    // The translator of a rank below kNumTranslators.
    Translator* atRank(size_t rank) const { return mByRank[rank]; }

    // Number of entries, null ones included.
    size_t size() const { return mClaims.size(); }

  private:
    struct Claim {
        Translator* translator = nullptr;
        int rank = -1;
    };

    std::map<Parameter, Claim> mClaims;
    std::vector<Translator*> mByRank;
};

}  // namespace vessa
