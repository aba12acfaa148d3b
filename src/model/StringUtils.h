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

}  // namespace vessa
