// The functions that the plugin exports. Whoever opens it may close it again while its thread runs, so it is linked to
// stay.
#include "rf/IccPluginApi.h"
#include "simulator/IccDevice.h"

using simulator::IccDevice;

extern "C" {

void iccApis_init(uint8_t version, uint32_t speed, uint8_t brindle) {
    IccDevice::get().init(version, speed, brindle);
}

ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    return IccDevice::get().registerEvent(type, context, callback);
}

void iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen, uint32_t timeoutMs) {
    IccDevice::get().sendRequest(reqId, static_cast<const uint8_t*>(req), reqLen, resp, respLen, timeoutMs);
}

spi_cmd_err_code_e iccSetSatelliteAntState(int technology, int antenna, int state) {
    return IccDevice::get().setSatelliteAntState(technology, antenna, state);
}

// NOLINTBEGIN(performance-unnecessary-value-param): the signature is the plugin interface's
spi_cmd_err_code_e iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                        std::vector<uint8_t> param2) {
    return IccDevice::get().setTxSharingState(enable, band, param1, param2);
}
// NOLINTEND(performance-unnecessary-value-param)

spi_cmd_err_code_e iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return IccDevice::get().setAclState(enable, freq, cc, ant);
}

spi_cmd_err_code_e iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config) {
    return IccDevice::get().setCoexAntState({tech, chain, static_cast<int8_t>(state), static_cast<int8_t>(config)});
}

uint8_t iccGetHwId() {
    return IccDevice::get().getHwId();
}

void enableIccUartLog() {
    IccDevice::get().enableUartLog();
}

void iccReloadConfig() {
    IccDevice::get().reloadConfig();
}

void setScreenState(bool on) {
    IccDevice::get().setScreenState(on);
}

// The record is a copy that nobody reads back, so the state itself is told by events alone.
spi_cmd_err_code_e getIccState(IccStateInfoType) {
    return IccDevice::get().getState();
}

void sendIccEventInd(uint32_t event, uint8_t* data, uint16_t size) {
    IccDevice::get().sendEventInd(event, data, size);
}

}  // extern "C"
