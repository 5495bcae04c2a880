#include "bench/support/System.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stubs/Sinks.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <type_traits>
#include <utility>

namespace bench {
namespace {

using namespace interface;  // NOLINT: the classes of the interface, and only here
using ndk::ScopedAStatus;

// A callback that hands the calls of one method, or of all, to a counter; the others it ignores.
template <class I, class Count>
class CountingCallback final : public subsys_stubs::Sink<I, CountingCallback<I, Count>> {
public:
    explicit CountingCallback(Count count) : mCount(std::move(count)) {}

    template <class Method, class... Args>
    ScopedAStatus onCall(const Method&, const Args&... arguments) {
        if constexpr (std::is_invocable_v<Count&, const Args&...>) mCount(arguments...);
        return ScopedAStatus::ok();
    }

private:
    Count mCount;
};

template <class I, class Count>
std::shared_ptr<I> counting(Count count) {
    return ndk::SharedRefBase::make<CountingCallback<I, Count>>(std::move(count));
}

// Counts the bench plugin's state events, which it numbers with one byte.
class IccEventCounter {
public:
    explicit IccEventCounter(Arrivals* arrivals) : mArrivals(arrivals) {}

    void operator()(const IccStateInfo& info) {
        if (mArrivals == nullptr) return;
        checkOrder(info);
        mArrivals->note(originNanos(info));
    }

private:
    void checkOrder(const IccStateInfo& info) {
        if (info.modeTypes.size() == 4 && static_cast<uint8_t>(info.state) == mNext++) return;
        std::fprintf(stderr, "an ICC event was lost or overtaken\n");
        std::_Exit(1);
    }

    static int64_t originNanos(const IccStateInfo& info) {
        std::array<uint8_t, 8> bytes{};
        for (size_t i = 0; i < 4; ++i) {
            bytes[2 * i] = info.modeTypes[i];
            bytes[2 * i + 1] = info.modeValues[i];
        }
        int64_t nanos = 0;
        std::memcpy(&nanos, bytes.data(), sizeof nanos);
        return nanos;
    }

    Arrivals* mArrivals;
    uint8_t mNext = 0;
};

std::filesystem::path buildFolder() {
    return std::filesystem::canonical("/proc/self/exe").parent_path().parent_path();
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

void makeDevice(const std::filesystem::path& root) {
    writeFile(root / "odm/etc/plugin_config.xml",
              "<plugin_config><item name=\"libiccapis\" path=\"/vendor/lib64/libbenchicc.so\"/></plugin_config>");
    writeFile(root / "vendor/build.prop", "persist.vendor.nuvex.icc.module.enable=1\n");
    writeFile(root / "proc/devinfo/lcd", "Device version: bench-panel\n");
    std::filesystem::create_directories(root / "vendor/lib64");
    std::filesystem::create_symlink(buildFolder() / "lib/libbenchicc.so", root / "vendor/lib64/libbenchicc.so");
}

[[noreturn]] void execDaemon(const std::string& program, const std::string& components, const std::string& device,
                             int ready) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(ready, STDOUT_FILENO);
    execl(program.c_str(), program.c_str(), "--device", device.c_str(), "--log-level", "error", "--load",
          components.c_str(), nullptr);
    std::perror(program.c_str());
    _exit(127);
}

}  // namespace

Daemon::Daemon() {
    std::string pattern = std::filesystem::temp_directory_path() / "subsys-bench-XXXXXX";
    mFolder = mkdtemp(pattern.data());
    makeDevice(std::filesystem::path(mFolder) / "device");
    setenv("SUBSYS_BINDER_DIR", (mFolder + "/binder").c_str(), 1);
    std::array<int, 2> ready{};
    if (pipe2(ready.data(), O_CLOEXEC) != 0) std::exit(1);
    const std::string program = buildFolder() / "bin/subsysd";
    const std::string components = buildFolder() / "lib/libbenchcomponents.so";
    const std::string device = mFolder + "/device";
    mPid = fork();
    if (mPid == 0) execDaemon(program, components, device, ready[1]);
    close(ready[1]);
    char line = 0;
    if (read(ready[0], &line, 1) != 1) {
        std::fprintf(stderr, "subsysd did not start\n");
        std::exit(1);
    }
    // The read end stays open, so that the daemon can print what it likes.
}

Daemon::~Daemon() {
    kill(mPid, SIGTERM);
    waitpid(mPid, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove_all(mFolder, ignored);
}

std::shared_ptr<ISubsys> connect() {
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    return ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(name.c_str())));
}

SystemShape::SystemShape(Counted counted, Request request, Arrivals* shared) : mRequest(std::move(request)) {
    Arrivals& target = shared != nullptr ? *shared : arrivals;
    ABinderProcess_startThreadPool();
    mService = connect();
    if (counted != Counted::RTP_DATA) {
        Arrivals* const responses = counted == Counted::RESPONSES ? &target : nullptr;
        Arrivals* const events = counted == Counted::ICC_EVENTS ? &target : nullptr;
        const auto response = counting<ISubsysResponse>([responses](const auto&...) {
            if (responses != nullptr) responses->note();
        });
        const auto indication = counting<ISubsysIndication>(IccEventCounter(events));
        mService->setCallback(response, indication);
        mCallbacks = {response, indication};
    } else {
        const auto response = counting<IImsOrtcResponse>([] {});
        const auto indication = counting<IImsOrtcIndication>([&target](const ImsRtpDataInfo&) { target.note(); });
        mService->setImsOrtcCallback(response, indication);
        mCallbacks = {response, indication};
    }
}

}  // namespace bench
