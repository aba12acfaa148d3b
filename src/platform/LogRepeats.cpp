#include "platform/LogRepeats.h"

#include <android/log.h>

#include <algorithm>

namespace vessa {

LogRepeats::LogRepeats(const char* tag, int priority, std::chrono::milliseconds window)
    : mTag(tag), mPriority(priority), mWindow(window) {}

LogRepeats::~LogRepeats() {
    for (const auto& [what, count] : mCounts) summarise(what, count);
}

void LogRepeats::summarise(const std::string& what, const Count& count) {
    if (count.repeats == 0) return;
    auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - count.windowStart);
    __android_log_print(mPriority, mTag, "%s: %lu more times in the last %lld s", what.c_str(),
                        count.repeats,
                        static_cast<long long>(std::max<long long>(seconds.count(), 1)));
}

bool LogRepeats::admit(const std::string& what) {
    std::lock_guard<std::mutex> guard(mLock);
    const Clock::time_point now = Clock::now();
    auto found = mCounts.find(what);
    if (found != mCounts.end() && now - found->second.windowStart < mWindow) {
        ++found->second.repeats;
        return false;
    }
    if (found != mCounts.end()) {
        summarise(what, found->second);
        found->second = Count{now, 0};
        return true;
    }
    if (mCounts.size() >= kMaxLines) {
        auto oldest = std::min_element(mCounts.begin(), mCounts.end(), [](auto& a, auto& b) {
            return a.second.windowStart < b.second.windowStart;
        });
        summarise(oldest->first, oldest->second);
        mCounts.erase(oldest);
    }
    mCounts.emplace(what, Count{now, 0});
    return true;
}

}  // namespace vessa
