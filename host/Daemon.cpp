#include "host/Daemon.h"

#include "component/ComponentManager.h"
#include "host/ComponentLibrary.h"
#include "host/PluginList.h"
#include "host/SignalThread.h"
#include "rf/RfSubsysComponent.h"
#include "service/SubsysService.h"

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <device/Recorder.h>
#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::SubsysService;
using mindroid::Log;

namespace {

constexpr const char* TAG = "subsysd";
// Requests return at once, so that a few threads serve many clients.
constexpr uint32_t BINDER_THREADS = 4;

bool loadComponents(const Options& options) {
    for (const auto& library : options.libraries) {
        if (!loadComponentLibrary(library)) return false;
    }
    for (const auto& folder : options.folders) loadComponentFolder(folder);
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
    Log::e(TAG, "can't publish %s: %s", serviceName().c_str(),
           isHeld ? "another process serves it" : "the folder of service names is not usable");
    return false;
}

// On the signals' thread, while components may still start.
void logName() {
    Log::i(TAG, "%s, pid %d", serviceName().c_str(), getpid());
}

void startBinder() {
    ABinderProcess_setThreadPoolMaxThreadCount(BINDER_THREADS);
    ABinderProcess_startThreadPool();
}

}  // namespace

int subsysdServe(const Options& options) {
    (void)device::startRecorder("subsysd");
    mindroid::Looper::prepare();
    const SignalThread signals(options.stopTimeout, logName);
    checkPluginList();
    if (!loadComponents(options)) return EXIT_FAILURE;
    startComponents();
    const auto service = ndk::SharedRefBase::make<SubsysService>();
    if (!publish(*service)) return EXIT_FAILURE;
    startBinder();
    printf("subsysd: serving %s, pid %d\n", serviceName().c_str(), getpid());
    fflush(stdout);
    mindroid::Looper::loop();
    return EXIT_SUCCESS;
}
