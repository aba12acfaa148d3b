#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace vessa::test {

// A program run by a test. Its output goes to files in a directory the test
// owns; it is killed when the test process dies and when this object goes.
class ChildProcess {
  public:
    struct Result {
        int exitCode = -1;  // -1 when it did not exit in time or died by a signal
        std::string out;
        std::string err;
    };

    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts argv[0] (a path) with its arguments; `name` names the output files.
    bool start(const std::vector<std::string>& argv, const std::string& dir,
               const std::string& name);
    pid_t pid() const { return mPid; }
    bool running();
    void signal(int sig);
    // Waits for the exit; false on timeout. `exitCode` is -1 after a signal.
    bool wait(std::chrono::milliseconds timeout, int* exitCode = nullptr);
    // Sends `sig`, waits, and kills it if it does not go in time.
    int stop(int sig = 15, std::chrono::milliseconds timeout = std::chrono::seconds(10));

    std::string out() const;
    std::string err() const;
    // Polls the standard output until it holds `text`.
    bool waitForOutput(const std::string& text, std::chrono::milliseconds timeout) const;

    // Runs a program to its end (killed after `timeout`).
    static Result run(const std::vector<std::string>& argv, const std::string& dir,
                      std::chrono::milliseconds timeout = std::chrono::seconds(30));

  private:
    pid_t mPid = -1;
    std::string mOutPath;
    std::string mErrPath;
};

}  // namespace vessa::test
