#pragma once

#include "tuning/RowDataValueSetter.h"

namespace vessa {

// As row data, but a row without numbers stores the single value 0, so the
// parameter is never sent empty.
class DrcRowDataValueSetter : public RowDataValueSetter {
  public:
    DrcRowDataValueSetter(const std::string& nodeName, Parameter param);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
