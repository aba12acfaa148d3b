#pragma once

#include <mutex>
#include <string>
#include <vector>

struct __android_logger_data;

namespace vessa {

// Records every line sent to the Android log while it is installed, so tests can
// assert exact messages. Only one capture may be installed at a time; the
// previous logger is restored when it is destroyed.
class LogCapture {
public:
    struct Line {
        int priority;
        std::string tag;
        std::string message;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Line> lines() const;
    // Lines of one tag, in order; an empty tag matches every line.
    std::vector<Line> linesWithTag(const std::string& tag) const;
    // True if a line with this tag and exactly this message was logged.
    bool contains(const std::string& tag, const std::string& message) const;
    bool contains(int priority, const std::string& tag, const std::string& message) const;
    size_t count(const std::string& tag, const std::string& message) const;
    void clear();

private:
    static void record(const ::__android_logger_data* data, const char* message);

    int mPreviousPriority;
    mutable std::mutex mLock;
    std::vector<Line> mLines;
};

}  // namespace vessa
