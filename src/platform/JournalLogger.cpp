#include "platform/JournalLogger.h"

#include <android/log.h>
#include <sys/stat.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace vessa {

bool JournalLogger::install() {
    if (!isJournalStream(STDERR_FILENO)) {
        __android_log_set_logger(__android_log_stderr_logger);
        return false;
    }
    __android_log_set_logger(&JournalLogger::log);
    return true;
}

bool JournalLogger::isJournalStream(int fd) {
    const char* stream = getenv("JOURNAL_STREAM");
    uintmax_t device = 0;
    uintmax_t inode = 0;
    struct stat status {};
    // A child that inherited the variable but not the descriptor must not count.
    return stream != nullptr && sscanf(stream, "%ju:%ju", &device, &inode) == 2 &&
           fstat(fd, &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

int JournalLogger::syslogPriority(int androidPriority) {
    switch (androidPriority) {
        case ANDROID_LOG_FATAL:
            return LOG_CRIT;
        case ANDROID_LOG_ERROR:
            return LOG_ERR;
        case ANDROID_LOG_WARN:
            return LOG_WARNING;
        case ANDROID_LOG_INFO:
            return LOG_INFO;
        default:
            return LOG_DEBUG;
    }
}

void JournalLogger::log(const __android_logger_data* data, const char* message) {
    const char* tag = data->tag != nullptr ? data->tag : "";
    sd_journal_send("MESSAGE=%s: %s", tag, message, "PRIORITY=%d", syslogPriority(data->priority),
                    "VESSA_TAG=%s", tag, nullptr);
}

}  // namespace vessa
