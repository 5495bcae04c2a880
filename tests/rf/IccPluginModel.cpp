// The plugin that the RF tests load: written from the plugin API alone, as a stranger would.

#include "tests/rf/IccPluginModel.h"

#include <cstring>
#include <sstream>

namespace test {

IccPluginModel& iccPlugin() {
    static IccPluginModel& sModel = *new IccPluginModel();
    return sModel;
}

void IccPluginModel::emit(IccEventType type, const void* data, int size) {
    std::unique_lock guard(lock);
    const Registration registration = registrations[type];
    guard.unlock();
    if (registration.callback == nullptr) return;
    // The buffer is the plugin's: what it holds is gone when the callback returns.
    std::vector<uint8_t> buffer(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + size);
    registration.callback(type, registration.context, data == nullptr ? nullptr : buffer.data(), size);
    std::memset(buffer.data(), 0xEE, buffer.size());
}

namespace {

template <typename T>
std::string text(const std::vector<T>& values) {
    std::string all = "{";
    for (const T value : values) all += (all.size() > 1 ? " " : "") + std::to_string(value);
    return all + "}";
}

template <typename T>
std::string text(T value) {
    return std::to_string(value);
}

template <typename... Args>
spi_cmd_err_code_e record(const char* function, const Args&... args) {
    std::string call = std::string(function) + "(";
    ((call += (call.back() == '(' ? "" : ",") + text(args)), ...);
    iccPlugin().calls.add(call + ")");
    if (iccPlugin().onCall) iccPlugin().onCall();
    return iccPlugin().code;
}

std::vector<uint8_t> bytes(const void* data, size_t size) {
    const auto* first = static_cast<const uint8_t*>(data);
    return {first, first + size};
}

}  // namespace

}  // namespace test

using test::record;

extern "C" {

void iccApis_init(uint8_t version, uint32_t speed, uint8_t brindle) {
    record("iccApis_init", version, speed, brindle);
}

ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    {
        const std::lock_guard guard(test::iccPlugin().lock);
        test::iccPlugin().registrations[type] = {context, callback};
    }
    record("registerIccEvent", static_cast<int>(type));
    return ICC_APIS_FAILURE;
}

void iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen, uint32_t timeoutMs) {
    const auto request = test::bytes(req, reqLen < 4 ? reqLen : 4);
    static_cast<uint8_t*>(resp)[0] = 0;
    if (respLen > 1) std::memset(resp, 0x5A, 2);
    record("iccSendReqSync", reqId, request, reqLen, respLen, timeoutMs);
}

spi_cmd_err_code_e iccSetSatelliteAntState(int technology, int antenna, int state) {
    return record("iccSetSatelliteAntState", technology, antenna, state);
}

spi_cmd_err_code_e iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                        std::vector<uint8_t> param2) {
    return record("iccSetTxSharingState", enable, band, param1, param2);
}

spi_cmd_err_code_e iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return record("iccSetAclState", enable, freq, cc, ant);
}

spi_cmd_err_code_e iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config) {
    return record("iccSetCoexAntState", tech, chain, state, config);
}

uint8_t iccGetHwId() {
    record("iccGetHwId");
    return 77;
}

void enableIccUartLog() {
    record("enableIccUartLog");
}

void iccReloadConfig() {
    record("iccReloadConfig");
}

void setScreenState(bool on) {
    record("setScreenState", on);
}

spi_cmd_err_code_e getIccState(IccStateInfoType state) {
    state.iccState = static_cast<IccStateType>(9);  // a copy: nobody sees it
    return record("getIccState", state.modeNum);
}

void sendIccEventInd(uint32_t event, uint8_t* data, uint16_t size) {
    record("sendIccEventInd", event, test::bytes(data, size));
}
}
