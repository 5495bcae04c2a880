// subsysd: the vendor daemon that loads the service library and publishes its service.

#include "host/Daemon.h"
#include "host/Options.h"
#include "host/StderrLog.h"

#include <android/log.h>
#include <device/Exhaustion.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace {

constexpr const char* TAG = "subsysd";
constexpr int EXIT_EXHAUSTED = 4;

const std::terminate_handler sAbort = std::get_terminate();

// An exception that is a fault in the program aborts it.
void onTerminate() {
    const char* const reason = device::exhausted();
    if (reason == nullptr) sAbort();
    __android_log_print(ANDROID_LOG_FATAL, TAG, "can't go on: %s", reason);
    _exit(EXIT_EXHAUSTED);
}

// A standard descriptor that is closed would be the number of the next file: a log line would go to a client.
bool openStandardFiles() {
    int file = 0;
    do {
        file = open("/dev/null", O_RDWR);
    } while (file >= 0 && file <= STDERR_FILENO);
    return file >= 0 && close(file) == 0;
}

// What the parent blocked is taken, too. A reader of the output that goes away must not end the service, nor must a
// signal that asks nothing of it; SIGUSR1 is taken as soon as the service is loaded.
void prepareSignals() {
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    for (const int number : {SIGPIPE, SIGHUP, SIGUSR1, SIGUSR2}) signal(number, SIG_IGN);
}

void startLog(android_LogPriority lowest) {
#if defined(__ANDROID__)
    __android_log_set_minimum_priority(lowest);
#else
    startStderrLog(lowest);
#endif
}

// The environment is what the service library, plugins and components look at; it must stand before they are loaded.
std::error_code useDevice(const std::string& device) {
    std::error_code error;
    const auto folder = std::filesystem::canonical(device, error);
    if (error) return error;
    if (!std::filesystem::is_directory(folder, error)) return std::make_error_code(std::errc::not_a_directory);
    if (setenv("SUBSYS_DEVICE_ROOT", folder.c_str(), 1) != 0) return {errno, std::generic_category()};
    return {};
}

bool chooseDevice(const std::optional<std::string>& option) {
    const char* environment = getenv("SUBSYS_DEVICE_ROOT");
    const std::string device = option.value_or(environment != nullptr ? environment : "");
    if (!option && device.empty()) return true;
    const std::error_code error = useDevice(device);
    if (!error) return true;
    __android_log_print(ANDROID_LOG_ERROR, TAG, "can't use the device folder '%s': %s", device.c_str(),
                        error.message().c_str());
    return false;
}

int serve(const Options& options) {
    void* daemon = dlopen("libsubsys_daemon.so", RTLD_NOW | RTLD_GLOBAL);
    auto* subsysd = daemon != nullptr ? reinterpret_cast<SubsysdServe*>(dlsym(daemon, "subsysdServe")) : nullptr;
    if (subsysd != nullptr) return subsysd(options);
    __android_log_print(ANDROID_LOG_ERROR, TAG, "can't load the service: %s", dlerror());
    return EXIT_FAILURE;
}

// Threads of binder, components and plugins run to the very end and use what static destructors would take away, so
// there are none: the process just stops.
[[noreturn]] void end(int code) {
    fflush(nullptr);
#if defined(__SANITIZE_ADDRESS__)
    __lsan_do_leak_check();  // _exit leaves it out
#endif
    _exit(code);
}

}  // namespace

int main(int argc, char** argv) {
    if (!openStandardFiles()) {
        perror("subsysd: can't open /dev/null");
        return EXIT_FAILURE;
    }
    std::set_terminate(onTerminate);
    const Options options = Options::parse(argc, argv);
    prepareSignals();
    startLog(options.logLevel);
    end(chooseDevice(options.device) ? serve(options) : EXIT_FAILURE);
}
