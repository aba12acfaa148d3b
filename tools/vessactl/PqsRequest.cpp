#include "PqsRequest.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "ParameterTable.h"

namespace vessa {

namespace {

constexpr size_t kWord = sizeof(int32_t);
// Sent after every registration change: two words, -1 and 0.
constexpr int32_t kRegistrationNotice[2] = {-1, 0};

void appendWord(PqsRequest::Bytes* bytes, int32_t word) {
    uint8_t raw[kWord];
    memcpy(raw, &word, kWord);
    bytes->insert(bytes->end(), raw, raw + kWord);
}

std::string joined(const std::vector<int32_t>& values) {
    std::string text;
    for (int32_t v : values) text += (text.empty() ? "" : " ") + std::to_string(v);
    return text;
}

std::string parameterText(int32_t id, const std::vector<int32_t>& values) {
    const ParameterTable::ParamId* info = ParameterTable::findParamId(id);
    return std::to_string(id) + " " + (info != nullptr ? info->name : "(unknown)") + " = " +
           joined(values);
}

bool printable(const PqsRequest::Bytes& bytes) {
    for (uint8_t b : bytes) {
        if (!std::isprint(b)) return false;
    }
    return !bytes.empty();
}

std::string hex(const PqsRequest::Bytes& bytes) {
    std::string text;
    char byte[4];
    for (uint8_t b : bytes) {
        snprintf(byte, sizeof(byte), "%02x", b);
        text += byte;
    }
    return text;
}

}  // namespace

PqsRequest::Bytes PqsRequest::blob(BlobCommand command, std::initializer_list<int32_t> words,
                                   const std::vector<int32_t>& values) {
    Bytes bytes;
    bytes.reserve((2 + words.size() + values.size()) * kWord);
    appendWord(&bytes, 0);  // the command's byte is set below, independent of byte order
    bytes[3] = static_cast<uint8_t>(command);
    appendWord(&bytes, 0);
    for (int32_t w : words) appendWord(&bytes, w);
    for (int32_t v : values) appendWord(&bytes, v);
    return bytes;
}

PqsRequest::Bytes PqsRequest::onOff(bool on) {
    return blob(kOnOff, {on ? 1 : 0});
}

PqsRequest::Bytes PqsRequest::setParameter(int profile, int id,
                                           const std::vector<int32_t>& values) {
    return blob(kSetParameter, {profile, id}, values);
}

PqsRequest::Bytes PqsRequest::setPortParameter(int profile, int port, int id,
                                               const std::vector<int32_t>& values) {
    return blob(kSetPortParameter, {profile, port, id}, values);
}

PqsRequest::Bytes PqsRequest::selectProfile(int profile) {
    return blob(kSelectProfile, {profile});
}

PqsRequest::Bytes PqsRequest::resetProfile(int profile) {
    return blob(kResetProfile, {profile});
}

PqsRequest::Bytes PqsRequest::query(Query command, int32_t a, int32_t b) {
    Bytes bytes = {static_cast<uint8_t>(command >> 24), static_cast<uint8_t>(command >> 16),
                   static_cast<uint8_t>(command >> 8), static_cast<uint8_t>(command)};
    appendWord(&bytes, a);
    appendWord(&bytes, b);
    return bytes;
}

PqsRequest::Bytes PqsRequest::portQuery(int profile, int port, int id) {
    Bytes bytes = query(kQueryPortParameter, id, 0);
    bytes[8] = static_cast<uint8_t>(((profile & 0x0f) << 4) | (port & 0x0f));
    return bytes;
}

int PqsRequest::blobCommand(const Bytes& bytes) {
    if (bytes.size() < 2 * kWord || bytes[0] != 0 || bytes[1] != 0 || bytes[2] != 0) return -1;
    return bytes[3];
}

int32_t PqsRequest::word(const Bytes& bytes, size_t index) {
    int32_t value = 0;
    if ((index + 1) * kWord <= bytes.size()) memcpy(&value, bytes.data() + index * kWord, kWord);
    return value;
}

std::vector<int32_t> PqsRequest::words(const Bytes& bytes, size_t first) {
    std::vector<int32_t> values;
    for (size_t i = first; (i + 1) * kWord <= bytes.size(); ++i) values.push_back(word(bytes, i));
    return values;
}

bool PqsRequest::isEchoOf(const Bytes& update, const Bytes& request) {
    if (update.size() != request.size()) return false;
    bool isBlob = blobCommand(request) >= 0;
    for (size_t i = 0; i < update.size(); ++i) {
        bool answerSlot = isBlob && i >= kWord && i < 2 * kWord;
        if (!answerSlot && update[i] != request[i]) return false;
    }
    return true;
}

std::string PqsRequest::describeUpdate(const Bytes& update) {
    if (update.empty()) return "parameters changed (tuning reloaded)";
    if (update.size() == sizeof(kRegistrationNotice) &&
        memcmp(update.data(), kRegistrationNotice, sizeof(kRegistrationNotice)) == 0) {
        return "clients changed";
    }
    const std::string profile = "profile " + std::to_string(word(update, 2));
    switch (blobCommand(update)) {
        case kOnOff:
            return std::string("effect ") + (word(update, 2) > 0 ? "on" : "off");
        case kSetParameter:
            return profile + ": " + parameterText(word(update, 3), words(update, 4));
        case kSetPortParameter: {
            int port = word(update, 3);
            const char* name = port >= 0 && port < ParameterTable::kNumPorts
                                       ? ParameterTable::portName(port)
                                       : "?";
            return profile + ", port " + std::to_string(port) + " " + name + ": " +
                   parameterText(word(update, 4), words(update, 5));
        }
        case kSelectProfile:
            return profile + " selected";
        case kResetProfile:
            return profile + " reset";
        case -1:
            break;
        default:
            return "blob command " + std::to_string(blobCommand(update)) + " (no action)";
    }
    if (printable(update)) {
        return "tuning device selected: " + std::string(update.begin(), update.end());
    }
    return "bytes " + hex(update);
}

}  // namespace vessa
