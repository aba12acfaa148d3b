#pragma once

#include <vector>

#include "effect/SetParamCommand.h"
#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "model/Vocabulary.h"

namespace vessa {

// Turns one or more Parameters of a settings view into effect entries.
// Translators are stateless; a change of any source Parameter makes one run.
class Translator {
  public:
    virtual ~Translator();
    // The Parameters this translator reads and is triggered by.
    virtual const std::vector<Parameter>& getSrcParams() const = 0;
    // Appends this translator's entries to `cmd`, reading values from `src`.
    virtual void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                              bool mono) const = 0;

  protected:
    // The values of `p`; an absent Parameter is added to the source as an
    // empty list, which is what the translator then sees.
    static std::vector<int>& valuesOf(ParameterValues& src, Parameter p) { return src.valuesOf(p); }
    // The first value of `p` (read as above); an empty list counts as 0.
    static int firstValueOf(ParameterValues& src, Parameter p);
    // The four per-channel Parameters of a table, in the effect's channel order.
    struct ChannelParams {
        Parameter left;
        Parameter right;
        Parameter leftSurround;
        Parameter rightSurround;
    };
    static constexpr int kTwoChannels = 2;
    static constexpr int kFourChannels = 4;

    // The first value of output_channels (0 when empty).
    static int outputChannelsOf(ParameterValues& src);
    // A per-channel table with the channel count first: {channels}, {len(left)},
    // left, right and, for 4 channels, left surround and right surround. Other
    // channel counts add nothing.
    static void addChannelTable(SetParamCommand& cmd, AupParameter code, ParameterValues& src,
                                const ChannelParams& params);
    // Number of elements of a value list, as an entry word.
    static int lengthOf(const std::vector<int>& values) { return static_cast<int>(values.size()); }
};

// Base of the special translators: each class reads the fixed list of source
// Parameters in its static kSrcParams.
template <typename Derived>
class FixedSourceTranslator : public Translator {
  public:
    const std::vector<Parameter>& getSrcParams() const override { return Derived::kSrcParams; }
};

}  // namespace vessa
