#pragma once

struct __android_logger_data;

namespace vessa {

// A liblog logger for a daemon whose stderr is the systemd journal: every line goes
// through sd-journal with its priority and tag as fields, so `journalctl -p` can
// filter it. On a terminal the stderr logger's format stays.
class JournalLogger {
  public:
    // The journal when stderr is connected to it (JOURNAL_STREAM names stderr's
    // device and inode), else liblog's stderr logger. True for the journal.
    static bool install();
    // JOURNAL_STREAM ("DEVICE:INODE") names the file open on `fd`.
    static bool isJournalStream(int fd);
    // The syslog priority of an Android log priority.
    static int syslogPriority(int androidPriority);

  private:
    JournalLogger() = delete;
    static void log(const ::__android_logger_data* data, const char* message);
};

}  // namespace vessa
