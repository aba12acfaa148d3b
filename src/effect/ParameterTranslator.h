#pragma once

#include <bitset>

#include "effect/SetParamCommand.h"
#include "effect/Translator.h"
#include "effect/TranslatorCollection.h"
#include "model/ParamChangeObserver.h"
#include "model/ParameterValues.h"

namespace vessa {

// The translation dispatcher of one device: its parameter view reports each
// changed Parameter here, the translators reading it become pending, and the
// next translation runs each pending translator once.
class ParameterTranslator : public ParamChangeObserver {
  public:
    // The one Parameter-to-translator map, built at start after the translators.
    static TranslatorCollection* const sTranslatorCollection;

    ParameterTranslator() = default;
    ~ParameterTranslator() override;

    void setSource(ParameterValues* source, Endpoint endpoint, bool mono) override;
    void onParameterChanged(Parameter p) override;

    // Runs every pending translator, in pending-set order, into `cmd`, then
    // clears the pending set.
    void translatePending(SetParamCommand& cmd);
    // Marks every Parameter the source may hold as changed, then translates:
    // every translator reading one of them runs exactly once.
    void translateAll(SetParamCommand& cmd);

    ParameterValues* getSource() const { return mSource; }
    Endpoint getEndpoint() const { return mEndpoint; }
    bool isMono() const { return mMono; }

  private:
    // By rank, which is the translators' address and creation order, so a
    // batch's entry order is fixed. A bitset, so marking allocates nothing.
    std::bitset<TranslatorCollection::kNumTranslators> mPending;
    ParameterValues* mSource = nullptr;
    Endpoint mEndpoint = Endpoint::OTHER;
    bool mMono = false;
};

}  // namespace vessa
