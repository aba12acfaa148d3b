#pragma once

#include <string>
#include <vector>

#include "model/Parameter.h"
#include "tuning/TagIterator.h"
#include "tuning/ValueSetter.h"

namespace vessa {

// Base of the setters whose element fills an ordered list of parameters:
// attribute i of the setter's attribute names feeds parameter i.
class MultiParamValueSetter : public ValueSetter {
  protected:
    // `attrNames` is the subclass's static kAttrNames; only its address is kept,
    // so the order in which static tables are built does not matter.
    MultiParamValueSetter(const std::string& nodeName, const std::vector<Parameter>& params,
                          const std::vector<std::string>& attrNames)
        : ValueSetter(nodeName), mParams(params), mAttrNames(attrNames) {}

    // Stores list i into parameter i, empty lists too.
    void storeLists(ParameterValues& values, const std::vector<std::vector<int>>& lists) const {
        for (size_t i = 0; i < mParams.size() && i < lists.size(); ++i) {
            values.set(mParams[i], lists[i]);
        }
    }

    // Visits the node `depth` levels below the setter's element and its
    // following siblings, handing `band` the attribute record of each (empty for
    // a node that is not an element), until `band` returns false. The iterator
    // is left where it was.
    template <typename BandFn>
    void forEachBand(TagIterator& it, int depth, BandFn band) const {
        it.pushNode();
        for (int level = 0; level < depth; ++level) it.childrenNext();
        std::vector<std::string> attrs;
        while (it.isCurValid()) {
            attrs.clear();
            it.parseNodeWithName(mAttrNames, attrs);
            if (!band(it, attrs)) break;
            it.next();
        }
        it.popNode();
    }

    const std::vector<Parameter> mParams;
    const std::vector<std::string>& mAttrNames;
};

}  // namespace vessa
