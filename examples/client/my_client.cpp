// A client: asks for the name of the LCD and prints what comes back.
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>

namespace {

using namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys;

using Info = SubsysResponseInfo;
using Status = ndk::ScopedAStatus;

// The client chooses it.
constexpr int32_t SERIAL = 4711;

// The answers of the service, on a binder thread. Each names the serial that the client gave its request.
class Response final : public BnSubsysResponse {
public:
    std::promise<SUBSYS_Errno> done;
    std::atomic<bool> answered = false;

    Status getLcdInfoResponse(const Info& info, const std::string& lcdInfo) override {
        // The answers to other clients' requests come here, too, while this one is the latest client.
        if (info.serial != SERIAL || answered.exchange(true)) return Status::ok();
        printf("request %d: error %d, LCD '%s'\n", info.serial, static_cast<int>(info.error), lcdInfo.c_str());
        done.set_value(info.error);
        return Status::ok();
    }
    Status getSwtpStatusResponse(const Info&, int8_t) override { return Status::ok(); }
    Status setMipiFreqClkResponse(const Info&) override { return Status::ok(); }
    Status setOscFreqClkResponse(const Info&) override { return Status::ok(); }
    Status getNvramDataResponse(const Info&, const std::string&) override { return Status::ok(); }
    Status setIccTuningStateResponse(const Info&) override { return Status::ok(); }
    Status setIccWifiAntStateResponse(const Info&) override { return Status::ok(); }
    Status setIccSatelliteAntStateResponse(const Info&) override { return Status::ok(); }
    Status getIccStateResponse(const Info&, const IccStateInfo&) override { return Status::ok(); }
    Status killProcessResponse(const Info&) override { return Status::ok(); }
    Status sendIccCmdResponse(const Info&, const IccRespInfo&) override { return Status::ok(); }
};

// The events of the service, on a binder thread.
class Indication final : public BnSubsysIndication {
public:
    Status sendSubsysStateChanged(bool state) override {
        printf("the subsystem is %s\n", state ? "up" : "down");
        return Status::ok();
    }
    Status sendSwtpStatusChanged(int8_t) override { return Status::ok(); }
    Status sendiccStateChanged(const IccStateInfo&) override { return Status::ok(); }
    Status notifyIccPercStateChangedInd(const IccPerceptionInfo&) override { return Status::ok(); }
    Status notifyIccInfoChanged(const IccIndInfo&) override { return Status::ok(); }
};

int fail(const std::string& what) {
    fprintf(stderr, "my_client: %s\n", what.c_str());
    return EXIT_FAILURE;
}

}  // namespace

int main() {
    // Answers and events need a thread that takes them.
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();

    const std::string name = std::string(ISubsys::descriptor) + "/default";
    const ndk::SpAIBinder binder(AServiceManager_checkService(name.c_str()));
    const std::shared_ptr<ISubsys> service = ISubsys::fromBinder(binder);
    if (service == nullptr) return fail("nobody serves " + name);

    // Both must live as long as the client wants to be told.
    const auto response = ndk::SharedRefBase::make<Response>();
    const auto indication = ndk::SharedRefBase::make<Indication>();
    auto answered = response->done.get_future();
    if (!service->setCallback(response, indication).isOk()) return fail("setCallback failed");

    if (!service->getLcdInfo(SERIAL, 0).isOk()) return fail("getLcdInfo failed");
    if (answered.wait_for(std::chrono::seconds(5)) != std::future_status::ready) return fail("no answer in 5 s");
    return answered.get() == SUBSYS_Errno::SUCCESS ? EXIT_SUCCESS : EXIT_FAILURE;
}
