// An ICC plugin. The service calls it on one thread, one function at a time, so it needs no lock. A function that is
// left out, as most are here, is skipped by the service.
#include "rf/IccPluginApi.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr uint8_t HARDWARE_ID = 7;
constexpr uint8_t SATELLITE_MODE = 3;

uint8_t sSatelliteState = 0;
// The latest registration for the event that this plugin reports.
void* sContext = nullptr;
IccEventCallback sCallback = nullptr;

void reportState() {
    if (sCallback == nullptr) return;
    IccStateInfoType state{};
    state.iccState = static_cast<IccStateType>(1);
    state.modeNum = 1;
    state.modes[0] = SATELLITE_MODE;
    state.modes[1] = sSatelliteState;
    sCallback(ICC_EVENT_STATE_CHANGED, sContext, &state, sizeof(state));  // copied before it returns
}

}  // namespace

ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    if (type != ICC_EVENT_STATE_CHANGED) return ICC_APIS_FAILURE;
    sContext = context;
    sCallback = callback;
    reportState();  // a client that comes later is told, too
    return ICC_APIS_SUCCESS;
}

uint8_t iccGetHwId() {
    return HARDWARE_ID;
}

spi_cmd_err_code_e iccSetSatelliteAntState(int /*technology*/, int antenna, int state) {
    if (antenna > 3) return SPI_CMD_NOT_SUPPORT;
    sSatelliteState = static_cast<uint8_t>(state);
    reportState();
    return SPI_CMD_SUCCESS;
}

// The answer is a status byte and the request itself.
void iccSendReqSync(uint32_t /*reqId*/, void* req, uint32_t reqLen, void* resp, uint32_t respLen, uint32_t) {
    if (respLen == 0) return;
    auto* answer = static_cast<uint8_t*>(resp);
    answer[0] = SPI_CMD_SUCCESS;
    std::copy_n(static_cast<const uint8_t*>(req), std::min(reqLen, respLen - 1), answer + 1);
}
