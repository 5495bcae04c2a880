#include "host/Daemon.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <device/Recorder.h>
#include <mindroid/Looper.h>

#include "component/ComponentManager.h"
#include "host/ComponentLibrary.h"
#include "host/SignalWaiter.h"
#include "rf/RfSubsysComponent.h"
#include "service/SubsysService.h"

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::SubsysService;

namespace {

// Requests return at once, so that a few threads serve many clients.
constexpr uint32_t BINDER_THREADS = 4;

// On a device the system records.
void startRecorder() {
#if !defined(__ANDROID__)
    (void)device::startRecorder("subsysd");
#endif
}

bool loadAll(const std::vector<std::string>& libraries) {
    for (const auto& library : libraries) {
        if (!loadComponentLibrary(library)) return false;
    }
    return true;
}

// All components live on the main thread's looper and are initialised there, before any request can come.
void startComponents() {
    auto* manager = hal::ComponentManager::getInstance();
    manager->add(new hal::RfSubsysComponent());
    manager->init(0);
}

std::string serviceName() {
    return std::string(ISubsys::descriptor) + "/default";
}

bool publish(SubsysService& service) {
    service.init();
    service.postInit();
    if (service.registerAsServer() == 0) return true;
    // The name's lock says it: a holder that is stopped would not answer.
    const bool isHeld = AServiceManager_isDeclared(serviceName().c_str());
    fprintf(stderr, "subsysd: can't publish %s: %s\n", serviceName().c_str(),
            isHeld ? "another process serves it" : "the folder of service names is not usable");
    return false;
}

void startBinder() {
    ABinderProcess_setThreadPoolMaxThreadCount(BINDER_THREADS);
    ABinderProcess_startThreadPool();
}

}  // namespace

int subsysdServe(const std::vector<std::string>& libraries) {
    startRecorder();
    mindroid::Looper::prepare();
    const SignalWaiter waiter;
    if (!loadAll(libraries)) return EXIT_FAILURE;
    startComponents();
    const auto service = ndk::SharedRefBase::make<SubsysService>();
    if (!publish(*service)) return EXIT_FAILURE;
    startBinder();
    printf("subsysd: serving %s, pid %d\n", serviceName().c_str(), getpid());
    fflush(stdout);
    mindroid::Looper::loop();
    return EXIT_SUCCESS;
}
