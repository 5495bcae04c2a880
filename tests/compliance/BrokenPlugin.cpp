// An ICC plugin that breaks one rule, which FAULT in the environment names.
#if defined(WRONG_LINKAGE)
#include <cstdint>

// Without the header that gives it its linkage; and it needs what no library has.
extern "C" int missingFromEveryLibrary();
uint8_t iccGetHwId() {
    return static_cast<uint8_t>(missingFromEveryLibrary());
}
#else
#include "rf/IccPluginApi.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

bool has(const char* fault) {
    const char* const given = getenv("FAULT");
    return given != nullptr && std::strcmp(given, fault) == 0;
}

void sleepMillis(int millis) {
    usleep(static_cast<useconds_t>(millis) * 1000);
}

// Gone when the static objects are, as its threads are not.
struct Device {
    ~Device() { text = nullptr; }
    const char* volatile text = "device";
} sDevice;

void report(IccEventType type, void* context, IccEventCallback callback, void* data, int size) {
    if (has("context")) context = nullptr;
    if (has("noData")) data = nullptr;
    if (has("short")) --size;
    callback(has("type") ? static_cast<IccEventType>(9) : type, context, data, size);
}

}  // namespace

ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    IccStateInfoType state{};
    IccPercStateType perception{};
    state.modeNum = has("modes") ? ICC_MAX_MODES + 1 : ICC_MAX_MODES;
    perception.size = has("entries") ? ICC_MAX_PERC_ENTRIES + 1 : ICC_MAX_PERC_ENTRIES;
    if (type == ICC_EVENT_STATE_CHANGED) report(type, context, callback, &state, sizeof(state));
    if (type == ICC_EVENT_PERC_CHANGED) report(type, context, callback, &perception, sizeof(perception));
    return ICC_APIS_SUCCESS;
}

void iccSendReqSync(uint32_t, void*, uint32_t, void* resp, uint32_t respLen, uint32_t timeoutMs) {
    std::memset(resp, 1, has("overrun") ? respLen + 1 : respLen);
    if (has("slow") && timeoutMs == 100) sleepMillis(900);
    if (has("late") && timeoutMs == 100) {
        std::thread([resp] {
            sleepMillis(100);
            *static_cast<char*>(resp) = 1;
        }).detach();
    }
}

uint8_t iccGetHwId() {
    while (has("hang")) sleepMillis(1000);
    if (has("quit")) std::exit(0);
    return 1;
}

void enableIccUartLog() {
    if (has("crash")) std::abort();
}

void iccReloadConfig() {
    if (has("throw")) throw std::runtime_error("no config");
    if (!has("end")) return;
    std::thread([] {
        for (;;) {
            [[maybe_unused]] const volatile char first = *sDevice.text;
        }
    }).detach();
}
#endif
