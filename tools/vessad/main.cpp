// vessad: serves the vessa parameter service on D-Bus until SIGINT or SIGTERM.

#include <android/log.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "dbus/PqsServer.h"
#include "dbus/BusConnection.h"
#include "dbus/SignalWaiter.h"
#include "platform/FileSystemRoot.h"
#include "service/VessaManagerService.h"

namespace {

constexpr const char* kTag = "vessad";

void printUsage(FILE* out) {
    fprintf(out,
            "Usage: vessad [--root DIR] [--bus session|system|ADDRESS] [--verbose]\n"
            "\n"
            "Serves vendor.vessa_v3_6.hardware.pqs360 until SIGINT or SIGTERM, then saves\n"
            "the state and exits 0. SIGHUP re-reads the tuning files and goes on serving.\n"
            "If the bus goes away, it saves and exits 1.\n"
            "\n"
            "  --root DIR   resolve /odm/etc/vessa/... and /data/vendor/vessa/... under DIR\n"
            "               (default /)\n"
            "  --bus BUS    session (default), system, or a D-Bus address (unix:path=...)\n"
            "  --verbose    log debug lines too (the log goes to stderr)\n");
}

struct Options {
    std::string root;
    std::string bus = "session";
    bool verbose = false;
};

// False (after a message) for a bad command line; `exitNow` for --help.
bool parseOptions(int argc, char** argv, Options* options, bool* exitNow) {
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            printUsage(stdout);
            *exitNow = true;
            return true;
        }
        if (arg == "-v" || arg == "--verbose") {
            options->verbose = true;
            continue;
        }
        if ((arg == "--root" || arg == "--bus") && i + 1 < argc) {
            (arg == "--root" ? options->root : options->bus) = argv[++i];
            continue;
        }
        fprintf(stderr, "vessad: unexpected argument '%s'\n", arg.c_str());
        printUsage(stderr);
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    bool exitNow = false;
    if (!parseOptions(argc, argv, &options, &exitNow)) return 2;
    if (exitNow) return 0;
    // Before anything else: every fixed path of the service resolves under it.
    if (!options.root.empty()) vessa::FileSystemRoot::set(options.root);

    __android_log_set_logger(__android_log_stderr_logger);
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
        __android_log_print(ANDROID_LOG_ERROR, kTag, "%s", error.c_str());
        return 1;
    }
    __android_log_print(ANDROID_LOG_INFO, kTag, "ready (root %s)",
                        vessa::FileSystemRoot::get().c_str());

    int received;
    while ((received = events.wait()) == SIGHUP) {
        // A daemon's SIGHUP: read the configuration again, keep serving.
        __android_log_print(ANDROID_LOG_INFO, kTag, "%s: reloading the tuning files",
                            strsignal(received));
        service->reloadTuningFiles();
    }
    int status = 0;
    if (received == 0) {
        std::lock_guard<std::mutex> guard(lostLock);
        __android_log_print(ANDROID_LOG_ERROR, kTag, "lost %s (%s): saving and exiting",
                            vessa::BusConnection::describe(options.bus).c_str(), lost.c_str());
        status = 1;
    } else {
        __android_log_print(ANDROID_LOG_INFO, kTag, "%s: stopping", strsignal(received));
    }
    // No request runs after this; then the last reference goes and the service saves.
    server.stop();
    service.clear();
    __android_log_print(ANDROID_LOG_INFO, kTag, "stopped");
    return status;
}
