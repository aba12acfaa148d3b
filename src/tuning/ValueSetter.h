#pragma once

#include <string>

#include "model/ParameterValues.h"

namespace vessa {

class TagIterator;

// Reads one element of a data section and stores its values into a record.
// Setters hold no per-parse state: one instance serves every parse.
class ValueSetter {
  public:
    explicit ValueSetter(const std::string& nodeName);
    virtual ~ValueSetter();
    ValueSetter(const ValueSetter&) = delete;
    ValueSetter& operator=(const ValueSetter&) = delete;

    // The element name this setter reads.
    virtual std::string getNodeName() const;
    // Reads the element at the iterator's current node; the iterator is left there.
    virtual void set(ParameterValues& values, TagIterator& it) const = 0;

  private:
    std::string mNodeName;
};

}  // namespace vessa
