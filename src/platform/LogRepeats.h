#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace vessa {

// Keeps one failure that repeats from flooding the log. The first occurrence of a
// failure in a window of kWindow is logged as usual; later ones in the window are
// only counted. The next occurrence after the window logs one summary line before
// its own, "<what>: N more times in the last S s", and so does the end of the
// object for what it still counts. `what` names the failure, without the details
// that vary between occurrences; callers log their own line, exactly as they always
// would, when admit() says so.
class LogRepeats {
  public:
    static constexpr std::chrono::seconds kWindow{10};
    // Distinct failures followed at once; beyond it, the oldest count is summarised.
    static constexpr size_t kMaxLines = 256;

    LogRepeats(const char* tag, int priority,
               std::chrono::milliseconds window = std::chrono::milliseconds(kWindow));
    ~LogRepeats();
    LogRepeats(const LogRepeats&) = delete;
    LogRepeats& operator=(const LogRepeats&) = delete;

    // True when the caller should log this occurrence of `what` now.
    bool admit(const std::string& what);

  private:
    using Clock = std::chrono::steady_clock;
    struct Count {
        Clock::time_point windowStart;
        unsigned long repeats = 0;
    };

    void summarise(const std::string& what, const Count& count);

    const char* mTag;
    int mPriority;
    std::chrono::milliseconds mWindow;
    std::mutex mLock;
    std::map<std::string, Count> mCounts;
};

}  // namespace vessa
