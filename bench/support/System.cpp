#include "bench/support/System.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysResponse.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

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

namespace bench {
namespace {

using namespace subsys_interface;  // NOLINT: the classes of the interface, and only here
using ndk::ScopedAStatus;

class CountingResponse final : public BnSubsysResponse {
public:
    explicit CountingResponse(Arrivals* arrivals) : mArrivals(arrivals) {}

    ScopedAStatus getSwtpStatusResponse(const SubsysResponseInfo&, int8_t) override { return note(); }
    ScopedAStatus getLcdInfoResponse(const SubsysResponseInfo&, const std::string&) override { return note(); }
    ScopedAStatus setMipiFreqClkResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus setOscFreqClkResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus getNvramDataResponse(const SubsysResponseInfo&, const std::string&) override { return note(); }
    ScopedAStatus setIccTuningStateResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus setIccWifiAntStateResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus setIccSatelliteAntStateResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus getIccStateResponse(const SubsysResponseInfo&, const IccStateInfo&) override { return note(); }
    ScopedAStatus killProcessResponse(const SubsysResponseInfo&) override { return note(); }
    ScopedAStatus sendIccCmdResponse(const SubsysResponseInfo&, const IccRespInfo&) override { return note(); }

private:
    ScopedAStatus note() {
        if (mArrivals != nullptr) mArrivals->note();
        return ScopedAStatus::ok();
    }

    Arrivals* const mArrivals;
};

// Counts the bench plugin's state events.
class CountingIndication final : public BnSubsysIndication {
public:
    explicit CountingIndication(Arrivals* arrivals) : mArrivals(arrivals) {}

    ScopedAStatus sendSubsysStateChanged(bool) override { return ScopedAStatus::ok(); }
    ScopedAStatus sendSwtpStatusChanged(int8_t) override { return ScopedAStatus::ok(); }
    ScopedAStatus sendiccStateChanged(const IccStateInfo& info) override {
        if (mArrivals == nullptr) return ScopedAStatus::ok();
        checkOrder(info);
        mArrivals->note(originNanos(info));
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyIccPercStateChangedInd(const IccPerceptionInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus notifyIccInfoChanged(const IccIndInfo&) override { return ScopedAStatus::ok(); }

private:
    // The plugin numbers its events with one byte.
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

    Arrivals* const mArrivals;
    uint8_t mNext = 0;
};

class SilentOrtcResponse final : public BnImsOrtcResponse {
public:
    ScopedAStatus setCallInfoResponse(const SubsysResponseInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus setOrtcRoomInfoResponse(const SubsysResponseInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus sendImsRtpDataResponse(const SubsysResponseInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus setImsRtpRemotePubIpAddrResponse(const SubsysResponseInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus sendImsRtpRedunSignalMsgResponse(const SubsysResponseInfo&,
                                                   const ImsRtpRedunSignalMsgRspInfo&) override {
        return ScopedAStatus::ok();
    }
};

// Counts the payloads that come back.
class CountingOrtcIndication final : public BnImsOrtcIndication {
public:
    explicit CountingOrtcIndication(Arrivals& arrivals) : mArrivals(arrivals) {}

    ScopedAStatus LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus recvImsRtpData(const ImsRtpDataInfo&) override {
        mArrivals.note();
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyOrtcStatus(const OrtcStatus&) override { return ScopedAStatus::ok(); }
    ScopedAStatus notifyConnectInfo(const OrtcConnectInfo&) override { return ScopedAStatus::ok(); }
    ScopedAStatus recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg&) override { return ScopedAStatus::ok(); }
    ScopedAStatus notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo&) override {
        return ScopedAStatus::ok();
    }

private:
    Arrivals& mArrivals;
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

SystemShape::SystemShape(Counted counted, Request request, Arrivals* shared) : mRequest(std::move(request)) {
    Arrivals& target = shared != nullptr ? *shared : arrivals;
    ABinderProcess_startThreadPool();
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    mService = ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(name.c_str())));
    if (counted != Counted::kRtpData) {
        Arrivals* const responses = counted == Counted::kResponses ? &target : nullptr;
        Arrivals* const events = counted == Counted::kIccEvents ? &target : nullptr;
        auto response = ndk::SharedRefBase::make<CountingResponse>(responses);
        auto indication = ndk::SharedRefBase::make<CountingIndication>(events);
        mService->setCallback(response, indication);
        mCallbacks = {response, indication};
    } else {
        auto response = ndk::SharedRefBase::make<SilentOrtcResponse>();
        auto indication = ndk::SharedRefBase::make<CountingOrtcIndication>(target);
        mService->setImsOrtcCallback(response, indication);
        mCallbacks = {response, indication};
    }
}

}  // namespace bench
