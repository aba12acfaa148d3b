#pragma once

#include <string>
#include <vector>

namespace vessa {

// Outcome of reading one integer from text.
enum class IntRead {
    NO_NUMBER,     // no number at the cursor; the value is 0
    IN_RANGE,      // a number in range
    OUT_OF_RANGE,  // a number outside int; the value is INT_MAX or INT_MIN
};

// Reads one decimal integer at `cursor` exactly as a formatted stream read of an
// int does, without the cost of a stream: leading whitespace skipped, an
// optional sign, digits up to the first character that cannot continue the
// number. `cursor` is left after what was consumed.
IntRead readInt(const char*& cursor, const char* end, int& value);

// Appends to `out` (never clears it) every integer of `text` in turn; one ','
// or one ' ' after each number is skipped. Reading stops at the first text that
// is not a number, including one out of range, which is not appended.
void string2IntVector(const std::string& text, std::vector<int>& out);
void string2IntVector(const char* text, size_t size, std::vector<int>& out);

// Splits `text` at every occurrence of `separator`, appending the pieces to `out`.
// Empty pieces between separators are kept; an empty rest after the last separator
// is not a piece, so a text ending in a newline gives no empty last line.
void splitString(const std::string& text, const std::string& separator,
                 std::vector<std::string>& out);

// The value of a "key=value" dump line: the text after the first '=', less one
// trailing ','. False, with `out` emptied, for a line that has no '='.
bool getStringValues(const std::string& line, std::string& out);

// Decimal text of an integer.
std::string int2String(int value);

}  // namespace vessa
