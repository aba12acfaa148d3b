// Round trip of a service request over D-Bus against the bare round trip of
// org.freedesktop.DBus.Peer.Ping to the same peer through the same bus daemon.
// Both travel client -> dbus-daemon -> service connection and back; the
// difference is what the front end adds: dispatch to the adaptor, unpacking,
// the service call and packing the answer. Ping of the bus daemon itself (one
// hop each way) is shown for scale.
//
// The benchmark starts its own dbus-daemon and serves the real service object
// in-process on its own connection; the client uses a second connection.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "dbus/PqsNames.h"
#include "dbus/PqsServer.h"
#include "pqs360/IPqs_proxy.h"
#include "service/VessaManagerService.h"
#include "vessa/IntCode.h"

namespace {

constexpr uint32_t kChannelCount = static_cast<uint32_t>(vessa::client::IntCode::CHANNEL_COUNT);
constexpr const char* kPeer = "org.freedesktop.DBus.Peer";

// A private dbus-daemon for the run, gone with the process.
class BenchBus {
  public:
    BenchBus() {
        char dir[] = "/tmp/vessa-bench-XXXXXX";
        if (mkdtemp(dir) == nullptr) return;
        mDir = dir;
        int pipeFds[2];
        if (pipe(pipeFds) != 0) return;
        std::string listen = "--address=unix:path=" + mDir + "/bus";
        std::string print = "--print-address=" + std::to_string(pipeFds[1]);
        mPid = fork();
        if (mPid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            close(pipeFds[0]);
            int quiet = open("/dev/null", O_WRONLY);
            dup2(quiet, 2);
            execl("/usr/bin/dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile",
                  listen.c_str(), print.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        close(pipeFds[1]);
        char buffer[512] = {};
        ssize_t n = read(pipeFds[0], buffer, sizeof(buffer) - 1);
        close(pipeFds[0]);
        if (n > 0) mAddress.assign(buffer, strcspn(buffer, "\n"));
    }
    ~BenchBus() {
        if (mPid > 0) {
            kill(mPid, SIGTERM);
            waitpid(mPid, nullptr, 0);
        }
        if (!mDir.empty()) {
            unlink((mDir + "/bus").c_str());
            rmdir(mDir.c_str());
        }
    }
    const std::string& address() const { return mAddress; }

  private:
    pid_t mPid = -1;
    std::string mDir;
    std::string mAddress;
};

class ServiceCalls final
    : public sdbus::ProxyInterfaces<vendor::vessa_v3_6::hardware::pqs360::IPqs_proxy> {
  public:
    ServiceCalls(sdbus::IConnection& connection)
        : ProxyInterfaces(connection, vessa::kPqsServiceName, vessa::kPqsObjectPath) {
        registerProxy();
    }
    ~ServiceCalls() { unregisterProxy(); }
};

// Everything the benchmarks share: bus, served service, client connection.
struct Setup {
    BenchBus bus;
    android::sp<android::VessaManagerService> service;
    std::unique_ptr<vessa::PqsServer> server;
    std::unique_ptr<sdbus::IConnection> client;
    std::unique_ptr<ServiceCalls> calls;
    std::unique_ptr<sdbus::IProxy> servicePeer;
    std::unique_ptr<sdbus::IProxy> daemonPeer;
    std::string error;

    Setup() {
        __android_log_set_minimum_priority(ANDROID_LOG_WARN);
        if (bus.address().empty()) {
            error = "cannot start dbus-daemon";
            return;
        }
        service = new android::VessaManagerService();
        server = std::make_unique<vessa::PqsServer>(service);
        if (!server->start(bus.address(), &error)) return;
        client = sdbus::createSessionBusConnectionWithAddress(bus.address());
        calls = std::make_unique<ServiceCalls>(*client);
        servicePeer = sdbus::createProxy(*client, vessa::kPqsServiceName, vessa::kPqsObjectPath);
        daemonPeer = sdbus::createProxy(*client, "org.freedesktop.DBus", "/org/freedesktop/DBus");
    }
    ~Setup() {
        calls.reset();
        servicePeer.reset();
        daemonPeer.reset();
        client.reset();
        if (server) server->stop();
        service.clear();
    }
};

Setup& setup() {
    static Setup shared;
    return shared;
}

bool ready(benchmark::State& state) {
    if (setup().error.empty()) return true;
    state.SkipWithError(setup().error.c_str());
    return false;
}

void ping(sdbus::IProxy& peer) {
    peer.callMethod("Ping").onInterface(kPeer);
}

void BM_GetIntParam(benchmark::State& state) {
    if (!ready(state)) return;
    for (auto _ : state) benchmark::DoNotOptimize(setup().calls->getIntParam(kChannelCount));
}
BENCHMARK(BM_GetIntParam)->UseRealTime();

void BM_PingService(benchmark::State& state) {
    if (!ready(state)) return;
    for (auto _ : state) ping(*setup().servicePeer);
}
BENCHMARK(BM_PingService)->UseRealTime();

void BM_PingBusDaemon(benchmark::State& state) {
    if (!ready(state)) return;
    for (auto _ : state) ping(*setup().daemonPeer);
}
BENCHMARK(BM_PingBusDaemon)->UseRealTime();

// Both calls in turn, in the same run and under the same load, so the ratio
// is not skewed by what the machine did between two benchmarks.
void BM_GetIntParamOverPing(benchmark::State& state) {
    if (!ready(state)) return;
    using Clock = std::chrono::steady_clock;
    Clock::duration request{}, peer{};
    for (auto _ : state) {
        auto t0 = Clock::now();
        benchmark::DoNotOptimize(setup().calls->getIntParam(kChannelCount));
        auto t1 = Clock::now();
        ping(*setup().servicePeer);
        auto t2 = Clock::now();
        request += t1 - t0;
        peer += t2 - t1;
    }
    double requestUs = std::chrono::duration<double, std::micro>(request).count();
    double peerUs = std::chrono::duration<double, std::micro>(peer).count();
    state.counters["getIntParam_us"] = requestUs / state.iterations();
    state.counters["ping_us"] = peerUs / state.iterations();
    state.counters["ratio"] = peerUs > 0 ? requestUs / peerUs : 0;
}
BENCHMARK(BM_GetIntParamOverPing)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
