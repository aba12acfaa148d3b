#pragma once

#include <map>
#include <string>
#include <vector>

#include "tuning/ValueSetter.h"

namespace vessa {

// Finds the setter of a data-section element by the element's name.
class SetterCollection {
  public:
    // One setter per known element, in creation order; built when the library
    // is loaded and never freed.
    static const std::vector<ValueSetter*>& kAllValueSetters;

    SetterCollection();

    // The setter for the name, or null. An unknown name is remembered with a
    // null entry, so the map grows by one per distinct unknown name.
    ValueSetter* getValueSetter(const std::string& name);

  private:
    std::map<std::string, ValueSetter*> mSetters;
};

}  // namespace vessa
