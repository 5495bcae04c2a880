#include "host/Daemon.h"

#include "component/ComponentManager.h"
#include "host/ComponentLibrary.h"
#include "host/DaemonState.h"
#include "host/LogLevel.h"
#include "host/PluginList.h"
#include "host/SignalThread.h"
#include "rf/RfSubsysComponent.h"
#include "service/SubsysService.h"

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <device/Recorder.h>
#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>

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

// The service with what the daemon adds to its dump.
class Service final : public SubsysService {
public:
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        if (numArgs > 0) return setLogLevel(fd, {args, numArgs});
        const binder_status_t status = SubsysService::dump(fd, args, numArgs);
        if (status != STATUS_OK) return status;
        return dprintf(fd, "%s", describeDaemon().c_str()) < 0 ? STATUS_UNKNOWN_ERROR : STATUS_OK;
    }

private:
    // "log", and the level from which on lines are written.
    static binder_status_t setLogLevel(int fd, std::span<const char*> args) {
        const bool isLog = args.size() == 2 && args[0] == std::string_view("log");
        const auto level = isLog ? parseLogLevel(args[1]) : std::nullopt;
        if (!level) {
            dprintf(fd, "usage: log LEVEL, which is %s\n", LOG_LEVELS);
            return STATUS_BAD_VALUE;
        }
        __android_log_set_minimum_priority(*level);
        return dprintf(fd, "daemon.log-level: %s\n", logLevelName()) < 0 ? STATUS_UNKNOWN_ERROR : STATUS_OK;
    }
};

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

// What is published; null until then.
std::atomic<Service*> sService = nullptr;

std::string textOf(Service& service) {
    std::string text;
    const int file = memfd_create("dump", MFD_CLOEXEC);
    if (file < 0) return text;
    (void)service.dump(file, nullptr, 0);
    text.resize(static_cast<size_t>(std::max<off_t>(lseek(file, 0, SEEK_CUR), 0)));
    text.resize(static_cast<size_t>(std::max<ssize_t>(pread(file, text.data(), text.size(), 0), 0)));
    close(file);
    return text;
}

// On the signals' thread, while components may still start.
void logState() {
    Log::i(TAG, "%s, pid %d", serviceName().c_str(), getpid());
    Service* const service = sService;
    std::istringstream text(service != nullptr ? textOf(*service) : "");
    for (std::string line; std::getline(text, line);) Log::i(TAG, "%s", line.c_str());
}

void startBinder() {
    ABinderProcess_setThreadPoolMaxThreadCount(BINDER_THREADS);
    ABinderProcess_startThreadPool();
}

}  // namespace

int subsysdServe(const Options& options) {
    (void)device::startRecorder("subsysd");
    mindroid::Looper::prepare();
    const SignalThread signals(options.stopTimeout, logState);
    for (const std::string& fault : pluginListFaults()) Log::w(TAG, "%s", fault.c_str());
    if (!loadComponents(options)) return EXIT_FAILURE;
    startComponents();
    const auto service = ndk::SharedRefBase::make<Service>();
    if (!publish(*service)) return EXIT_FAILURE;
    sService = service.get();
    startBinder();
    printf("subsysd: serving %s, pid %d\n", serviceName().c_str(), getpid());
    fflush(stdout);
    mindroid::Looper::loop();
    return EXIT_SUCCESS;
}
