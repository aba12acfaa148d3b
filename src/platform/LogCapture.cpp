#include "platform/LogCapture.h"

#include <android/log.h>

#include <atomic>

namespace vessa {

namespace {
std::atomic<LogCapture*> gActive{nullptr};
}

LogCapture::LogCapture() {
    gActive.store(this);
    __android_log_set_logger(&LogCapture::record);
    mPreviousPriority = __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

LogCapture::~LogCapture() {
    gActive.store(nullptr);
    __android_log_set_logger(__android_log_stderr_logger);
    __android_log_set_minimum_priority(mPreviousPriority);
}

void LogCapture::record(const __android_logger_data* data, const char* message) {
    LogCapture* self = gActive.load();
    if (self == nullptr) return;
    std::lock_guard<std::mutex> guard(self->mLock);
    self->mLines.push_back(
            Line{data->priority, data->tag ? data->tag : "", message ? message : ""});
}

std::vector<LogCapture::Line> LogCapture::lines() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mLines;
}

std::vector<LogCapture::Line> LogCapture::linesWithTag(const std::string& tag) const {
    std::vector<Line> out;
    for (const Line& line : lines()) {
        if (tag.empty() || line.tag == tag) out.push_back(line);
    }
    return out;
}

bool LogCapture::contains(const std::string& tag, const std::string& message) const {
    return count(tag, message) > 0;
}

bool LogCapture::contains(int priority, const std::string& tag, const std::string& message) const {
    for (const Line& line : lines()) {
        if (line.priority == priority && line.tag == tag && line.message == message) return true;
    }
    return false;
}

size_t LogCapture::count(const std::string& tag, const std::string& message) const {
    size_t n = 0;
    for (const Line& line : lines()) {
        if (line.tag == tag && line.message == message) ++n;
    }
    return n;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> guard(mLock);
    mLines.clear();
}

}  // namespace vessa
