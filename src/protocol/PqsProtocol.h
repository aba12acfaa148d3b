#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vessa/IntCode.h"
#include "vessa/Update.h"

namespace vessa {

// The byte layouts of the service's requests and notifications, written once for
// the service, the client library, the tools, the tests and the benchmarks.
// Words are native 32-bit integers. Every reader treats missing bytes as zeros.
class PqsProtocol {
  public:
    using Bytes = std::vector<uint8_t>;

    // setAupParam: word 0 holds the command in its top byte, word 1 is the
    // answer slot the service fills before the blob goes back to the clients.
    enum BlobCommand : int32_t {
        kOnOff = 0,             // word 2: the switch
        kSetParameter = 1,      // words 2, 3: profile, id; then the values
        kSetPortParameter = 2,  // words 2, 3, 4: profile, port, id; then the values
        kSelectProfile = 10,    // word 2: profile
        kResetProfile = 12,     // word 2: profile
    };
    // getAupParam: the command is the first four bytes, big-endian; a word at
    // byte 4 and one at byte 8 carry the arguments.
    enum QueryCommand : uint32_t {
        kQueryOnOff = 0,
        kQueryParameter = 1,      // byte 4: id; byte 8: profile
        kQueryPortParameter = 2,  // byte 4: id; byte 8: profile << 4 | port
        kQueryProfileCount = 3,
        kQuerySelectedProfile = 10,
        kQueryProfileModified = 11,  // byte 4: profile
        kQueryMonoSpeaker = 13,
    };

    // A blob as the service reads it. A command not in BlobCommand stays as read.
    struct Blob {
        int32_t command = -1;  // -1: word 0 is no command
        int32_t answer = 0;
        int32_t profile = 0;
        int32_t port = 0;
        int32_t id = 0;
        std::vector<int32_t> values;  // kOnOff: one value, the switch
    };
    struct Query {
        uint32_t command = 0;
        int32_t profile = 0;
        int32_t port = 0;
        int32_t id = 0;
    };

    static Bytes onOff(bool on);
    static Bytes setParameter(int32_t profile, int32_t id, const std::vector<int32_t>& values);
    static Bytes setPortParameter(int32_t profile, int32_t port, int32_t id,
                                  const std::vector<int32_t>& values);
    static Bytes selectProfile(int32_t profile);
    static Bytes resetProfile(int32_t profile);
    static Blob readBlob(const void* data, size_t length);
    // The same into `blob`, whose value list keeps its room: a reader that keeps one
    // Blob reads blobs of a steady size without allocating.
    static void readBlob(const void* data, size_t length, Blob* blob);
    // Writes the applied value into the answer slot, if the blob has one.
    static void writeAnswer(void* data, size_t length, int32_t answer);
    // True when `update` is the service's echo of `blob`: the same bytes but for
    // the answer slot.
    static bool isEchoOf(const Bytes& update, const Bytes& blob);

    static Bytes query(QueryCommand command, int32_t profile = 0, int32_t id = 0);
    // The port query packs the profile into four bits.
    static constexpr int kMaxPortQueryProfile = 15;
    static Bytes portQuery(int32_t profile, int32_t port, int32_t id);
    static Query readQuery(const void* data, size_t length);

    // Sent to every client after a registration changes: two words, -1 and 0.
    static Bytes registrationNotice();
    static client::Update readUpdate(const Bytes& bytes);

    // Word `index` of a buffer; 0 past the end.
    static int32_t word(const void* data, size_t length, size_t index);
    // Every whole word from word `first` on.
    static std::vector<int32_t> words(const void* data, size_t length, size_t first);

    static const std::vector<client::IntCodeInfo>& intCodes();
    static const client::IntCodeInfo* findIntCode(client::IntCode code);

  private:
    PqsProtocol() = delete;
    static Bytes blob(BlobCommand command, std::initializer_list<int32_t> words,
                      const std::vector<int32_t>& values = {});
};

}  // namespace vessa
