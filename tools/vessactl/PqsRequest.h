#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vessa {

// The byte layouts of the service's blob requests, built and read on the client
// side. Words are native 32-bit integers.
class PqsRequest {
  public:
    // setAupParam: the command number stands in the blob's fourth byte.
    enum BlobCommand : int32_t {
        kOnOff = 0,
        kSetParameter = 1,
        kSetPortParameter = 2,
        kSelectProfile = 10,
        kResetProfile = 12,
    };
    // getAupParam: the command is the first four bytes, big-endian.
    enum Query : uint32_t {
        kQueryOnOff = 0,
        kQueryParameter = 1,
        kQueryPortParameter = 2,
        kQueryProfileCount = 3,
        kQuerySelectedProfile = 10,
        kQueryProfileModified = 11,
        kQueryMonoSpeaker = 13,
    };

    using Bytes = std::vector<uint8_t>;

    // Blobs for setAupParam; word 1 is the answer slot the service fills.
    static Bytes onOff(bool on);
    static Bytes setParameter(int profile, int id, const std::vector<int32_t>& values);
    static Bytes setPortParameter(int profile, int port, int id,
                                  const std::vector<int32_t>& values);
    static Bytes selectProfile(int profile);
    static Bytes resetProfile(int profile);

    // getAupParam input: the command, then a at byte 4 and b at byte 8.
    static Bytes query(Query command, int32_t a = 0, int32_t b = 0);
    // Command 2 packs profile (high nibble) and port (low nibble) into byte 8.
    static Bytes portQuery(int profile, int port, int id);

    // The blob's command number; -1 when the bytes are not a blob.
    static int blobCommand(const Bytes& bytes);
    // Word `index`; 0 past the end.
    static int32_t word(const Bytes& bytes, size_t index);
    static std::vector<int32_t> words(const Bytes& bytes, size_t first);
    // True when `update` is the service's echo of `request`: the same bytes but
    // for the answer slot (word 1) of a blob.
    static bool isEchoOf(const Bytes& update, const Bytes& request);
    // One line describing an update the service sent to its clients.
    static std::string describeUpdate(const Bytes& update);

  private:
    PqsRequest() = delete;
    static Bytes blob(BlobCommand command, std::initializer_list<int32_t> words,
                      const std::vector<int32_t>& values = {});
};

}  // namespace vessa
