#include "ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

namespace vessa::test {

namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::atomic<int> sSerial{0};

}  // namespace

ChildProcess::~ChildProcess() {
    if (mPid > 0) stop(SIGKILL);
}

bool ChildProcess::start(const std::vector<std::string>& argv, const std::string& dir,
                         const std::string& name) {
    std::string base = dir + "/" + name + "." + std::to_string(sSerial++);
    mOutPath = base + ".out";
    mErrPath = base + ".err";
    // Everything the child needs is prepared before fork: only exec-safe calls after it.
    std::vector<char*> args;
    for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    int out = open(mOutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    int err = open(mErrPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (out < 0 || err < 0) return false;
    pid_t parent = getpid();
    mPid = fork();
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
    return mPid > 0;
}

bool ChildProcess::running() {
    if (mPid <= 0) return false;
    return !wait(std::chrono::milliseconds(0));
}

void ChildProcess::signal(int sig) {
    if (mPid > 0) kill(mPid, sig);
}

bool ChildProcess::wait(std::chrono::milliseconds timeout, int* exitCode) {
    if (mPid <= 0) return true;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        int status = 0;
        pid_t done = waitpid(mPid, &status, WNOHANG);
        if (done == mPid || done < 0) {
            mPid = -1;
            if (exitCode != nullptr) *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

int ChildProcess::stop(int sig, std::chrono::milliseconds timeout) {
    int exitCode = -1;
    signal(sig);
    if (!wait(timeout, &exitCode)) {
        signal(SIGKILL);
        wait(std::chrono::seconds(10), &exitCode);
        return -1;
    }
    return exitCode;
}

std::string ChildProcess::out() const {
    return readFile(mOutPath);
}

std::string ChildProcess::err() const {
    return readFile(mErrPath);
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout) const {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (out().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

ChildProcess::Result ChildProcess::run(const std::vector<std::string>& argv, const std::string& dir,
                                       std::chrono::milliseconds timeout) {
    ChildProcess child;
    Result result;
    if (!child.start(argv, dir, "run")) return result;
    if (!child.wait(timeout, &result.exitCode)) child.stop(SIGKILL);
    result.out = child.out();
    result.err = child.err();
    return result;
}

}  // namespace vessa::test
