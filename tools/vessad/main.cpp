// vessad: serves the vessa parameter service on D-Bus until SIGINT or SIGTERM.

#define LOG_TAG "vessad"

#include <fcntl.h>
#include <log/log.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "context/SxContextManager.h"
#include "dbus/BusConnection.h"
#include "dbus/PqsServer.h"
#include "dbus/SignalWaiter.h"
#include "platform/FileSystemRoot.h"
#include "platform/JournalLogger.h"
#include "service/VessaManagerService.h"

namespace {

struct Options {
    std::string root;
    std::string bus = "session";
    bool verbose = false;
};

// The exit status for --help, --version or a bad command line; -1 to go on.
int parseOptions(int argc, char** argv, Options* options) {
    CLI::App app(
            "Serves vendor.vessa_v3_6.hardware.pqs360 until SIGINT or SIGTERM, then saves "
            "the state and exits 0. SIGHUP re-reads the tuning files and goes on serving. "
            "If the bus goes away, it saves and exits 1.",
            "vessad");
    app.set_version_flag("--version", std::string("vessad ") + VESSA_VERSION);
    app.add_option("--root", options->root,
                   "resolve /odm/etc/vessa/... and /data/vendor/vessa/... under DIR (default /)")
            ->type_name("DIR");
    app.add_option("--bus", options->bus,
                   "session (default), system, or a D-Bus address (unix:path=...); the default "
                   "comes from VESSA_BUS when it is set")
            ->type_name("BUS")
            ->envname("VESSA_BUS");
    app.add_flag("-v,--verbose", options->verbose, "log debug lines too");
    app.footer(
            "Exit status: 0 after SIGINT or SIGTERM; 1 when the bus cannot be used or goes "
            "away; 2 for a bad command line.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
    }
    return -1;
}

// The file is read only when the first client registers; say now, with the full
// path, when that cannot work, so that it shows next to "ready" in the log.
void checkDefaultTuningFile() {
    const std::string path =
            vessa::FileSystemRoot::resolve(vessa::SxContextManager::kDefaultTuningFile);
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    const char* problem = nullptr;
    if (fd < 0) {
        problem = strerror(errno);
    } else if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        problem = "not a regular file";
    }
    if (fd >= 0) close(fd);
    if (problem != nullptr) {
        ALOGW("default tuning file %s cannot be read (%s): clients get no settings until it "
              "is there and the service reloads (SIGHUP)",
              path.c_str(), problem);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (int status = parseOptions(argc, argv, &options); status >= 0) return status;
    // Before anything else: every fixed path of the service resolves under it.
    if (!options.root.empty()) vessa::FileSystemRoot::set(options.root);

    vessa::JournalLogger::install();
    __android_log_set_minimum_priority(options.verbose ? ANDROID_LOG_VERBOSE : ANDROID_LOG_INFO);

    // Before the service and the bus start their threads.
    vessa::SignalWaiter events({SIGINT, SIGTERM, SIGHUP});
    // A client that closes its end of a descriptor it handed in (dump) must not
    // end the daemon: writes to it fail with EPIPE instead.
    signal(SIGPIPE, SIG_IGN);

    android::sp<android::VessaManagerService> service = new android::VessaManagerService();
    vessa::PqsServer server(service);
    std::mutex lostLock;
    std::string lost;  // why the bus went away, once it has
    auto onLost = [&](const std::string& reason) {
        std::lock_guard<std::mutex> guard(lostLock);
        lost = reason.empty() ? "the connection failed" : reason;
        events.wake();
    };
    std::string error;
    if (!server.start(options.bus, &error, onLost)) {
        ALOGE("%s", error.c_str());
        return 1;
    }
    checkDefaultTuningFile();
    ALOGI("ready (root %s)", vessa::FileSystemRoot::get().c_str());
    sd_notify(0, "READY=1");

    int received;
    while ((received = events.wait()) == SIGHUP) {
        // A daemon's SIGHUP: read the configuration again, keep serving.
        ALOGI("%s: reloading the tuning files", strsignal(received));
        sd_notify(0, "RELOADING=1");
        service->reloadTuningFiles();
        sd_notify(0, "READY=1");
    }
    int status = 0;
    if (received == 0) {
        std::lock_guard<std::mutex> guard(lostLock);
        ALOGE("lost %s (%s): saving and exiting",
              vessa::BusConnection::describe(options.bus).c_str(), lost.c_str());
        status = 1;
    } else {
        ALOGI("%s: stopping", strsignal(received));
    }
    sd_notify(0, "STOPPING=1");
    // No request runs after this; then the last reference goes and the service saves.
    server.stop();
    service.clear();
    ALOGI("stopped");
    return status;
}
