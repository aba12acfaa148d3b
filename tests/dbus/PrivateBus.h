#pragma once

// The harness of the tests that need a bus: programs run as child processes, and a
// dbus-daemon of the test's own.

#include <fcntl.h>
#include <sdbus-c++/sdbus-c++.h>
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

    // Sends `sig` (0 sends none) and returns the exit code once the program has
    // ended, -1 after a signal; a program not gone within `timeout` is killed.
    int stop(int sig, std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
        int status = -1;  // reads as "not exited"
        if (mPid > 0 && kill(mPid, sig) == 0 &&
            !eventually([&] { return waitpid(mPid, &status, WNOHANG) != 0; }, timeout)) {
            kill(mPid, SIGKILL);
            waitpid(mPid, &status, 0);
        }
        mPid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    pid_t pid() const { return mPid; }
    std::string out() const { return readFile(mOutPath); }
    std::string err() const { return readFile(mErrPath); }
    bool waitForOutput(const std::string& text) const {
        return eventually([&] { return out().find(text) != std::string::npos; },
                          std::chrono::seconds(10));
    }

    // Runs a program to its end (killed after 30 s). A braced list is evaluated in
    // order: the output is read once the program has ended.
    static Result run(const std::vector<std::string>& argv, const std::string& dir) {
        ChildProcess child(argv, dir);
        return {child.stop(0, std::chrono::seconds(30)), child.out(), child.err()};
    }

  private:
    pid_t mPid = -1;
    std::string mOutPath, mErrPath;
};

// A dbus-daemon listening on a socket in `dir`, with the session configuration or
// `config`. Its address is empty if it did not start (see error()).
class PrivateBus {
  public:
    explicit PrivateBus(const std::string& dir, const std::string& config = "")
        : mDaemon({"/usr/bin/dbus-daemon", config.empty() ? "--session" : "--config-file=" + config,
                   "--nofork", "--nopidfile", "--address=unix:path=" + dir + "/bus",
                   "--print-address=1"},
                  dir) {
        if (mDaemon.waitForOutput("\n"))
            mAddress = mDaemon.out().substr(0, mDaemon.out().find('\n'));
    }

    const std::string& address() const { return mAddress; }
    std::string error() const { return mDaemon.err(); }

    // Polls the bus until `name` has an owner (or, with `owned` false, has none).
    bool waitForOwner(const std::string& name, bool owned = true) const {
        auto connection = sdbus::createSessionBusConnectionWithAddress(mAddress);
        auto daemon =
                sdbus::createProxy(*connection, "org.freedesktop.DBus", "/org/freedesktop/DBus");
        return eventually(
                [&] {
                    bool hasOwner = false;
                    daemon->callMethod("NameHasOwner")
                            .onInterface("org.freedesktop.DBus")
                            .withArguments(name)
                            .storeResultsTo(hasOwner);
                    return hasOwner == owned;
                },
                std::chrono::seconds(10));
    }

  private:
    ChildProcess mDaemon;
    std::string mAddress;
};

}  // namespace vessa::test
