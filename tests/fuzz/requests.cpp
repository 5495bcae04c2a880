// Any calls to the service, with the simulator's components and plugin behind it.

#include "tests/fuzz/support/Calls.h"
#include "tests/fuzz/support/System.h"
#include "tests/support/NamesFolder.h"

#include <device/Recorder.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>

// In the place of the C library's: a request may name any process.
extern "C" int kill(pid_t, int) noexcept {
    return 0;
}

namespace {

void loadComponents() {
    static const test::NamesFolder FOLDER;
    fuzz::require(device::startRecorder("requests"));
    fuzz::require(dlsym(RTLD_DEFAULT, "kill") == reinterpret_cast<void*>(&kill));
    for (const char* library : {SIMVS, SIMIMS}) fuzz::require(dlopen(library, RTLD_NOW) != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static auto& sSystem = *new fuzz::System(loadComponents);
    static const auto OBJECTS = fuzz::callbacks();
    static const int NOWHERE = open("/dev/null", O_WRONLY | O_CLOEXEC);
    static const ndk::SpAIBinder SERVICE = sSystem.service().asBinder();
    FuzzedDataProvider input(data, size);
    sSystem.connect();
    while (input.remaining_bytes() != 0) (void)fuzz::call(SERVICE, OBJECTS, input);
    fuzz::require(AIBinder_dump(SERVICE.get(), NOWHERE, nullptr, 0) == STATUS_OK);
    sSystem.settle();
    return 0;
}
