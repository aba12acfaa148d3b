#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "SampleRoot.h"

namespace vessa::test {

// Polls `condition` until it holds or the time is up.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// A program run by a test (argv[0] is a path), its output in files in `dir`.
// It is killed when this object goes and when the test process dies.
class ChildProcess {
  public:
    struct Result {
        int exitCode = -1;  // -1 after a signal or a timeout
        std::string out, err;
    };

    ChildProcess(const std::vector<std::string>& argv, const std::string& dir) {
        static std::atomic<int> serial{0};
        mOutPath = dir + "/child" + std::to_string(serial++) + ".out";
        mErrPath = mOutPath + ".err";
        // Everything the child needs is prepared before fork: only exec-safe calls after it.
        std::vector<char*> args;
        for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        int out = open(mOutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        int err = open(mErrPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        pid_t parent = getpid();
        mPid = out < 0 || err < 0 ? -1 : fork();
        if (mPid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) _exit(127);
            dup2(out, 1);
            dup2(err, 2);
            sigset_t none;
            sigemptyset(&none);
            sigprocmask(SIG_SETMASK, &none, nullptr);
            execv(args[0], args.data());
            _exit(127);
        }
        close(out);
        close(err);
    }
    ~ChildProcess() { stop(SIGKILL); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Waits for the exit; false on timeout.
    bool wait(std::chrono::milliseconds timeout, int* exitCode = nullptr) {
        int status = -1;  // reads as "not exited" when there is nothing to wait for
        if (mPid > 0 &&
            !eventually([&] { return waitpid(mPid, &status, WNOHANG) != 0; }, timeout)) {
            return false;
        }
        mPid = -1;
        if (exitCode != nullptr) *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return true;
    }
    // Sends `sig` and returns the exit code; kills the program if it is not gone in 10 s.
    int stop(int sig) {
        int exitCode = -1;
        if (mPid > 0) kill(mPid, sig);
        if (!wait(std::chrono::seconds(10), &exitCode)) {
            kill(mPid, SIGKILL);
            wait(std::chrono::seconds(10));
        }
        return exitCode;
    }

    pid_t pid() const { return mPid; }
    std::string out() const { return readFile(mOutPath); }
    std::string err() const { return readFile(mErrPath); }
    bool waitForOutput(const std::string& text) const {
        return eventually([&] { return out().find(text) != std::string::npos; },
                          std::chrono::seconds(10));
    }

    // Runs a program to its end (killed after 30 s).
    static Result run(const std::vector<std::string>& argv, const std::string& dir) {
        ChildProcess child(argv, dir);
        Result result;
        if (!child.wait(std::chrono::seconds(30), &result.exitCode)) child.stop(SIGKILL);
        result.out = child.out();
        result.err = child.err();
        return result;
    }

  private:
    pid_t mPid = -1;
    std::string mOutPath, mErrPath;
};

}  // namespace vessa::test
