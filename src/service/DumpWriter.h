#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace android {

// Writes a dump to the descriptor a client handed in, without letting that client
// stall or end the service. What the descriptor takes at once is written at once;
// the rest (a reader that is slow to read, a full pipe) goes to a background thread
// that writes to a duplicate of the descriptor and gives up after kMaxWaitMs. A
// reader that has closed its end gets EPIPE, never SIGPIPE, whatever the process's
// signal settings.
class DumpWriter {
  public:
    // How long a reader that does not read is waited for, in all.
    static constexpr int kMaxWaitMs = 1000;

    DumpWriter() = default;
    // Waits for a background write still in progress, at most kMaxWaitMs.
    ~DumpWriter();
    DumpWriter(const DumpWriter&) = delete;
    DumpWriter& operator=(const DumpWriter&) = delete;

    void write(int fd, std::string text);

  private:
    // Writes from `offset` as far as the descriptor takes without waiting; the new
    // offset. `error` is set (an errno value) when it cannot be written at all.
    static size_t writeAvailable(int fd, const std::string& text, size_t offset, int* error);
    // The background part: waits for room, at most kMaxWaitMs, then closes `fd`.
    static void finish(int fd, std::string text, size_t offset);

    std::mutex mLock;
    std::thread mThread;
    std::atomic<bool> mBusy{false};
};

}  // namespace android
