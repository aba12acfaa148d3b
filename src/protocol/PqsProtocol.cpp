#include "protocol/PqsProtocol.h"

#include <cctype>
#include <cstring>

#include "protocol/ClientBuffer.h"

namespace vessa {

using client::IntCode;
using client::IntCodeInfo;
using client::Update;

namespace {

constexpr size_t kWord = sizeof(int32_t);
constexpr int32_t kRegistrationNotice[2] = {-1, 0};

void appendWord(PqsProtocol::Bytes* bytes, int32_t word) {
    uint8_t raw[kWord];
    memcpy(raw, &word, kWord);
    bytes->insert(bytes->end(), raw, raw + kWord);
}

// Every whole word from word `first` on.
void appendWords(const ClientBuffer& in, size_t first, std::vector<int32_t>* out) {
    for (size_t i = first; (i + 1) * kWord <= in.size(); ++i) out->push_back(in.word(i));
}

bool printable(const PqsProtocol::Bytes& bytes) {
    for (uint8_t b : bytes) {
        if (!std::isprint(b)) return false;
    }
    return !bytes.empty();
}

IntCodeInfo row(IntCode code, const char* meaning, IntCodeInfo::Reading reading) {
    uint32_t packed = static_cast<uint32_t>(code);
    IntCodeInfo info{code, {}, meaning, reading};
    for (int i = 0; i < 4; ++i) info.name[i] = static_cast<char>(packed >> (24 - 8 * i));
    return info;
}

}  // namespace

PqsProtocol::Bytes PqsProtocol::blob(BlobCommand command, std::initializer_list<int32_t> words,
                                     const std::vector<int32_t>& values) {
    Bytes bytes;
    bytes.reserve((2 + words.size() + values.size()) * kWord);
    appendWord(&bytes, static_cast<int32_t>(static_cast<uint32_t>(command) << 24));
    appendWord(&bytes, 0);
    for (int32_t w : words) appendWord(&bytes, w);
    for (int32_t v : values) appendWord(&bytes, v);
    return bytes;
}

PqsProtocol::Bytes PqsProtocol::onOff(bool on) {
    return blob(kOnOff, {on ? 1 : 0});
}

PqsProtocol::Bytes PqsProtocol::setParameter(int32_t profile, int32_t id,
                                             const std::vector<int32_t>& values) {
    return blob(kSetParameter, {profile, id}, values);
}

PqsProtocol::Bytes PqsProtocol::setPortParameter(int32_t profile, int32_t port, int32_t id,
                                                 const std::vector<int32_t>& values) {
    return blob(kSetPortParameter, {profile, port, id}, values);
}

PqsProtocol::Bytes PqsProtocol::selectProfile(int32_t profile) {
    return blob(kSelectProfile, {profile});
}

PqsProtocol::Bytes PqsProtocol::resetProfile(int32_t profile) {
    return blob(kResetProfile, {profile});
}

PqsProtocol::Blob PqsProtocol::readBlob(const void* data, size_t length) {
    Blob blob;
    readBlob(data, length, &blob);
    return blob;
}

void PqsProtocol::readBlob(const void* data, size_t length, Blob* blob) {
    ClientBuffer in(data, length);
    std::vector<int32_t> values = std::move(blob->values);
    values.clear();
    *blob = Blob();
    blob->values = std::move(values);
    uint32_t first = static_cast<uint32_t>(in.word(0));
    if ((first & 0x00ffffffu) != 0) return;
    blob->command = static_cast<int32_t>(first >> 24);
    blob->answer = in.word(1);
    switch (blob->command) {
        case kOnOff:
            blob->values.push_back(in.word(2));
            break;
        case kSetParameter:
            blob->profile = in.word(2);
            blob->id = in.word(3);
            appendWords(in, 4, &blob->values);
            break;
        case kSetPortParameter:
            blob->profile = in.word(2);
            blob->port = in.word(3);
            blob->id = in.word(4);
            appendWords(in, 5, &blob->values);
            break;
        default:
            blob->profile = in.word(2);
            break;
    }
}

void PqsProtocol::writeAnswer(void* data, size_t length, int32_t answer) {
    if (data != nullptr && length >= 2 * kWord) {
        memcpy(static_cast<uint8_t*>(data) + kWord, &answer, kWord);
    }
}

bool PqsProtocol::isEchoOf(const Bytes& update, const Bytes& blob) {
    if (update.size() != blob.size() || blob.size() < 2 * kWord) return false;
    return memcmp(update.data(), blob.data(), kWord) == 0 &&
           memcmp(update.data() + 2 * kWord, blob.data() + 2 * kWord, blob.size() - 2 * kWord) == 0;
}

PqsProtocol::Bytes PqsProtocol::query(QueryCommand command, int32_t profile, int32_t id) {
    Bytes bytes = {static_cast<uint8_t>(command >> 24), static_cast<uint8_t>(command >> 16),
                   static_cast<uint8_t>(command >> 8), static_cast<uint8_t>(command)};
    appendWord(&bytes, command == kQueryProfileModified ? profile : id);
    appendWord(&bytes, command == kQueryParameter ? profile : 0);
    return bytes;
}

PqsProtocol::Bytes PqsProtocol::portQuery(int32_t profile, int32_t port, int32_t id) {
    Bytes bytes = query(kQueryPortParameter, 0, id);
    bytes[2 * kWord] = static_cast<uint8_t>(((profile & 0x0f) << 4) | (port & 0x0f));
    return bytes;
}

PqsProtocol::Query PqsProtocol::readQuery(const void* data, size_t length) {
    ClientBuffer in(data, length);
    Query query;
    query.command = in.bigEndianAt(0);
    switch (query.command) {
        case kQueryParameter:
            query.id = in.wordAtOffset(kWord);
            query.profile = in.wordAtOffset(2 * kWord);
            break;
        case kQueryPortParameter: {
            uint8_t packed = in.byteAt(2 * kWord);
            query.id = in.wordAtOffset(kWord);
            query.profile = packed >> 4;
            query.port = packed & 0x0f;
            break;
        }
        case kQueryProfileModified:
            query.profile = in.wordAtOffset(kWord);
            break;
        default:
            break;
    }
    return query;
}

PqsProtocol::Bytes PqsProtocol::registrationNotice() {
    const auto* bytes = reinterpret_cast<const uint8_t*>(kRegistrationNotice);
    return Bytes(bytes, bytes + sizeof(kRegistrationNotice));
}

Update PqsProtocol::readUpdate(const Bytes& bytes) {
    Update update;
    update.bytes = bytes;
    if (bytes.empty()) {
        update.kind = Update::Kind::TUNING_RELOADED;
        return update;
    }
    if (bytes == registrationNotice()) {
        update.kind = Update::Kind::CLIENTS_CHANGED;
        return update;
    }
    Blob blob = bytes.size() >= 2 * kWord ? readBlob(bytes.data(), bytes.size()) : Blob();
    update.command = blob.command;
    update.answer = blob.answer;
    update.profile = blob.profile;
    switch (blob.command) {
        case -1:
            if (printable(bytes)) {
                update.kind = Update::Kind::TUNING_SELECTED;
                update.tuning.assign(bytes.begin(), bytes.end());
            }
            update.profile = -1;
            break;
        case kOnOff:
            update.kind = Update::Kind::EFFECT_SWITCHED;
            update.on = blob.values[0] > 0;
            update.profile = -1;
            break;
        case kSetParameter:
        case kSetPortParameter:
            update.kind = blob.command == kSetParameter ? Update::Kind::SETTING_CHANGED
                                                        : Update::Kind::PORT_SETTING_CHANGED;
            update.port = blob.command == kSetParameter ? -1 : blob.port;
            update.id = blob.id;
            update.values = std::move(blob.values);
            break;
        case kSelectProfile:
            update.kind = Update::Kind::PROFILE_SELECTED;
            break;
        case kResetProfile:
            update.kind = Update::Kind::PROFILE_RESET;
            break;
        default:
            update.kind = Update::Kind::OTHER_COMMAND;
            break;
    }
    return update;
}

int32_t PqsProtocol::word(const void* data, size_t length, size_t index) {
    return ClientBuffer(data, length).word(index);
}

std::vector<int32_t> PqsProtocol::words(const void* data, size_t length, size_t first) {
    std::vector<int32_t> values;
    appendWords(ClientBuffer(data, length), first, &values);
    return values;
}

const std::vector<IntCodeInfo>& PqsProtocol::intCodes() {
    using R = IntCodeInfo::Reading;
    // In the order a status display reads them: before ADEV, whose query records its time.
    static const std::vector<IntCodeInfo> kCodes = {
            row(IntCode::EFFECT_ON, "effect on", R::FLAG),
            row(IntCode::MOBILITY_PROFILE, "mobility profile selected", R::FLAG),
            row(IntCode::DIALOG_ENHANCER_AMOUNT, "dialog enhancer amount (0 when off, active port)",
                R::NUMBER),
            row(IntCode::VOLUME_LEVELER_AMOUNT, "volume leveler amount (active port)", R::NUMBER),
            row(IntCode::LAST_DEVICE_QUERY, "last active-device query (uptime ms)", R::UPTIME_MS),
            row(IntCode::ACTIVE_DEVICE, "active output device", R::DEVICE),
            row(IntCode::CHANNEL_COUNT, "channel count", R::NUMBER),
            row(IntCode::MONO_SPEAKER, "mono internal speaker", R::FLAG),
            row(IntCode::SPEAKER_PORTRAIT, "speaker in portrait mode", R::FLAG),
            row(IntCode::FRONT_SPEAKER_ANGLE, "front speaker angle (active port)", R::NUMBER),
            row(IntCode::HEIGHT_SPEAKER_ANGLE, "height speaker angle (active port)", R::NUMBER),
            row(IntCode::SURROUND_SPEAKER_ANGLE, "surround speaker angle (active port)", R::NUMBER),
            row(IntCode::FORMAT_VERSION, "default tuning file format version", R::VERSION),
            row(IntCode::DECODER_CLIENT, "a decoder client is registered", R::FLAG),
            row(IntCode::LAST_DECODER_TYPE, "last registered decoder client type", R::CLIENT_TYPE),
            row(IntCode::GAME_CLIENT, "game client registered", R::FLAG),
    };
    return kCodes;
}

const IntCodeInfo* PqsProtocol::findIntCode(IntCode code) {
    for (const IntCodeInfo& info : intCodes()) {
        if (info.code == code) return &info;
    }
    return nullptr;
}

}  // namespace vessa
