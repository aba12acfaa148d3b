#include "tuning/NodeParseUtils.h"

#include "model/StringUtils.h"
#include "tuning/TagIterator.h"

namespace vessa {

namespace {

// Appends the list held in the current element's first attribute.
void appendDataRow(TagIterator& it, std::vector<std::string>& scratch, std::vector<int>& out) {
    scratch.clear();
    it.parseNodeAll(scratch);
    if (!scratch.empty()) string2IntVector(scratch.front(), out);
}

}  // namespace

int string2Int(const std::string& text) {
    const char* cursor = text.data();
    int value = 0;
    readInt(cursor, cursor + text.size(), value);
    return value;
}

int NodeParseUtils::parseValue(TagIterator& it) {
    static const std::vector<std::string> kValueName = {"value"};
    std::vector<std::string> values;
    it.parseNodeWithName(kValueName, values);
    if (values.empty()) return 0;
    const std::string& text = values.front();
    if (text == "false") return 0;
    if (text == "true") return 1;
    return string2Int(text);
}

std::vector<int> NodeParseUtils::parseDataRow(TagIterator& it) {
    std::vector<std::string> scratch;
    std::vector<int> row;
    appendDataRow(it, scratch, row);
    return row;
}

std::vector<int> NodeParseUtils::parseMixMatrix(TagIterator& it) {
    std::vector<int> matrix;
    it.pushNode();
    it.childrenNext();
    if (!it.isChildrenValid()) {
        it.popNode();
        return matrix;
    }
    it.childrenNext();
    std::vector<std::string> scratch;
    while (it.isCurValid()) {
        appendDataRow(it, scratch, matrix);
        it.next();
    }
    it.popNode();
    return matrix;
}

}  // namespace vessa
