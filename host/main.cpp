// subsysd: the vendor daemon that loads the service library and publishes its service.
#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "host/Daemon.h"
#include "host/Options.h"
#include "host/StderrLog.h"

namespace {

// A thread of the service waits for these; blocked before there is any other thread, which inherits that.
void holdSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A reader of the output that goes away must not end the service.
    signal(SIGPIPE, SIG_IGN);
}

void startLog(android_LogPriority lowest) {
#if defined(__ANDROID__)
    __android_log_set_minimum_priority(lowest);
#else
    startStderrLog(lowest);
#endif
}

// The environment is what the service library, plugins and components look at; it must stand before they are loaded.
bool chooseDevice(const std::optional<std::string>& option) {
    const char* environment = getenv("SUBSYS_DEVICE_ROOT");
    const std::string device = option ? *option : environment != nullptr ? environment : "";
    if (!option && device.empty()) return true;
    std::error_code error;
    const auto folder = device.empty() ? std::filesystem::path() : std::filesystem::absolute(device, error);
    if (!std::filesystem::is_directory(folder, error)) {
        fprintf(stderr, "subsysd: no device folder %s\n", device.empty() ? "''" : device.c_str());
        return false;
    }
    setenv("SUBSYS_DEVICE_ROOT", folder.c_str(), 1);
    return true;
}

// In a build tree it stands beside the program's folder; installed, it is found by its name.
std::string daemonLibrary() {
    const std::string name = "libsubsys_daemon.so";
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto built = program.parent_path().parent_path() / "lib" / name;
    return std::filesystem::exists(built, error) ? built.string() : name;
}

int serve(const std::vector<std::string>& libraries) {
    void* daemon = dlopen(daemonLibrary().c_str(), RTLD_NOW | RTLD_GLOBAL);
    auto* subsysd = daemon != nullptr ? reinterpret_cast<SubsysdServe*>(dlsym(daemon, "subsysdServe")) : nullptr;
    if (subsysd != nullptr) return subsysd(libraries);
    fprintf(stderr, "subsysd: can't load the service: %s\n", dlerror());
    return EXIT_FAILURE;
}

// Threads of binder, components and plugins run to the very end and use what static destructors would take away, so
// there are none: the process just stops.
[[noreturn]] void end(int code) {
    fflush(nullptr);
    _exit(code);
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = Options::parse(argc, argv);
    holdSignals();
    startLog(options.logLevel);
    end(chooseDevice(options.device) ? serve(options.libraries) : EXIT_FAILURE);
}
