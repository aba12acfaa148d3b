#pragma once

#include <string>
#include <vector>

namespace vessa {

class TagIterator;

// The one text-to-integer conversion of tuning files: a decimal number read as a
// stream reads an int (leading whitespace, optional sign, stops at the first
// character that cannot continue it). 0 when the text does not start with a
// number; INT_MAX or INT_MIN when it is out of range.
int string2Int(const std::string& text);

// Value readers shared by several setters. Each leaves the iterator where it was.
class NodeParseUtils {
  public:
    NodeParseUtils() = delete;

    // The "value" attribute: "true" is 1, "false" is 0, else the number (0 when missing).
    static int parseValue(TagIterator& it);
    // The integer list written in the first attribute, whatever its name.
    static std::vector<int> parseDataRow(TagIterator& it);
    // Rows below the first child element (the wrapper), concatenated in order.
    static std::vector<int> parseMixMatrix(TagIterator& it);
};

}  // namespace vessa
