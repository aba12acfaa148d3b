#include "model/StringUtils.h"

#include <climits>

namespace vessa {

namespace {

// The classic-locale white space that a stream skips before a number.
bool isStreamSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

}  // namespace

IntRead readInt(const char*& cursor, const char* end, int& value) {
    const char* p = cursor;
    while (p != end && isStreamSpace(*p)) ++p;
    bool negative = false;
    if (p != end && (*p == '+' || *p == '-')) {
        negative = *p == '-';
        ++p;
    }
    // INT_MIN's magnitude is one more than INT_MAX's.
    const long long limit = negative ? -static_cast<long long>(INT_MIN) : INT_MAX;
    long long magnitude = 0;
    bool overflow = false;
    const char* digits = p;
    for (; p != end && *p >= '0' && *p <= '9'; ++p) {
        if (!overflow) {
            magnitude = magnitude * 10 + (*p - '0');
            overflow = magnitude > limit;
        }
    }
    cursor = p;
    if (p == digits) {
        value = 0;
        return IntRead::NO_NUMBER;
    }
    if (overflow) {
        value = negative ? INT_MIN : INT_MAX;
        return IntRead::OUT_OF_RANGE;
    }
    value = static_cast<int>(negative ? -magnitude : magnitude);
    return IntRead::IN_RANGE;
}

void string2IntVector(const std::string& text, std::vector<int>& out) {
    string2IntVector(text.data(), text.size(), out);
}

void string2IntVector(const char* text, size_t size, std::vector<int>& out) {
    const char* cursor = text;
    const char* end = cursor + size;
    int value = 0;
    while (readInt(cursor, end, value) == IntRead::IN_RANGE) {
        out.push_back(value);
        if (cursor != end && (*cursor == ',' || *cursor == ' ')) ++cursor;
    }
}

void splitString(const std::string& text, const std::string& separator,
                 std::vector<std::string>& out) {
    if (separator.empty()) {
        if (!text.empty()) out.push_back(text);
        return;
    }
    size_t start = 0;
    for (size_t found = text.find(separator); found != std::string::npos;
         found = text.find(separator, start)) {
        out.emplace_back(text, start, found - start);
        start = found + separator.size();
    }
    if (start < text.size()) out.emplace_back(text, start);
}

bool getStringValues(const std::string& line, std::string& out) {
    size_t equals = line.find('=');
    if (equals == std::string::npos) {
        out.clear();
        return false;
    }
    size_t end = line.size();
    if (end > equals + 1 && line[end - 1] == ',') --end;
    out.assign(line, equals + 1, end - equals - 1);
    return true;
}

std::string int2String(int value) {
    return std::to_string(value);
}

}  // namespace vessa
