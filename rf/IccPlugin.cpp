#include "rf/IccPlugin.h"

#include "component/RequestTrace.h"
#include "plugin/PluginManagerComponent.h"
#include "rf/IccProxy.h"

#include <mindroid/Log.h>

#include <atomic>
#include <utility>

using mindroid::Log;

namespace hal {

namespace {

constexpr const char* TAG = IccProxy::TAG;
constexpr const char* PLUGIN_NAME = "libiccapis";

// Deliberate: for the process, not for the proxy. A second proxy finds it set and never gets a plugin of its own.
std::atomic<bool> sIccApisLoaded = false;

}  // namespace

// The functions of the plugin. Symbol and type both come from the declaration in IccPluginApi.h.
struct IccPlugin::Functions {
#define PLUGIN_FUNCTION(name)    \
    Function<decltype(::name)> { \
#name, "plugin " #name   \
    }
    static constexpr auto init = PLUGIN_FUNCTION(iccApis_init);
    static constexpr auto registerEvent = PLUGIN_FUNCTION(registerIccEvent);
    static constexpr auto sendReqSync = PLUGIN_FUNCTION(iccSendReqSync);
    static constexpr auto setSatelliteAntState = PLUGIN_FUNCTION(iccSetSatelliteAntState);
    static constexpr auto setTxSharingState = PLUGIN_FUNCTION(iccSetTxSharingState);
    static constexpr auto setAclState = PLUGIN_FUNCTION(iccSetAclState);
    static constexpr auto setCoexAntState = PLUGIN_FUNCTION(iccSetCoexAntState);
    static constexpr auto getHwId = PLUGIN_FUNCTION(iccGetHwId);
    static constexpr auto startUartLog = PLUGIN_FUNCTION(enableIccUartLog);
    static constexpr auto reloadConfig = PLUGIN_FUNCTION(iccReloadConfig);
    static constexpr auto setScreen = PLUGIN_FUNCTION(setScreenState);
    static constexpr auto getState = PLUGIN_FUNCTION(getIccState);
    static constexpr auto sendEventInd = PLUGIN_FUNCTION(sendIccEventInd);
#undef PLUGIN_FUNCTION
};

bool IccPlugin::loadIccApisPlugin() {
    if (sIccApisLoaded) return true;
    // Asked for once: the component that gives it goes with the static objects, the manager stays.
    static PluginManager* const manager = getPluginManager();
    if (!manager->loadPlugin(PLUGIN_NAME)) {
        Log::e(TAG, "loadIccApisPlugin failed");
        return false;
    }
    mPlugin = manager->getPlugin(PLUGIN_NAME);
    Log::d(TAG, "loadIccApisPlugin done");
    sIccApisLoaded = true;
    return true;
}

template <typename R, typename... Args>
R IccPlugin::call(Function<R(Args...)> function, std::type_identity_t<Args>... args) {
    if (!isReachable()) return R();
    const TraceSection section(function.section);
    return mPlugin->call<R, Args...>(function.symbol, std::move(args)...);
}

template <typename R, typename... Args>
R IccPlugin::callOr(R fallback, Function<R(Args...)> function, std::type_identity_t<Args>... args) {
    return loadIccApisPlugin() ? call(function, std::move(args)...) : fallback;
}

template <typename... Args>
bool IccPlugin::tryCall(Function<void(Args...)> function, std::type_identity_t<Args>... args) {
    if (!loadIccApisPlugin()) return false;
    call(function, std::move(args)...);
    return true;
}

bool IccPlugin::iccApisInit(uint8_t version, uint32_t speed, uint8_t brindle) {
    return tryCall(Functions::init, version, speed, brindle);
}

bool IccPlugin::registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    if (!loadIccApisPlugin()) return false;
    call(Functions::registerEvent, type, context, callback);
    return true;
}

bool IccPlugin::iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen,
                               uint32_t timeoutMs) {
    return tryCall(Functions::sendReqSync, reqId, req, reqLen, resp, respLen, timeoutMs);
}

bool IccPlugin::iccReloadConfig() {
    return tryCall(Functions::reloadConfig);
}

bool IccPlugin::setScreenState(bool on) {
    return tryCall(Functions::setScreen, on);
}

bool IccPlugin::sendIccEventInd(uint32_t event, uint8_t* data, uint16_t size) {
    return tryCall(Functions::sendEventInd, event, data, size);
}

spi_cmd_err_code_e IccPlugin::iccSetSatelliteAntState(int technology, int antenna, int state) {
    return callOr(SPI_CMD_FAILURE, Functions::setSatelliteAntState, technology, antenna, state);
}

spi_cmd_err_code_e IccPlugin::iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band,
                                                   std::vector<uint16_t> param1, std::vector<uint8_t> param2) {
    return callOr(SPI_CMD_FAILURE, Functions::setTxSharingState, enable, std::move(band), std::move(param1),
                  std::move(param2));
}

spi_cmd_err_code_e IccPlugin::iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return callOr(SPI_CMD_FAILURE, Functions::setAclState, enable, freq, cc, ant);
}

spi_cmd_err_code_e IccPlugin::iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config) {
    return callOr(SPI_CMD_FAILURE, Functions::setCoexAntState, tech, chain, state, config);
}

spi_cmd_err_code_e IccPlugin::getIccState(const IccStateInfoType& state) {
    return callOr(SPI_CMD_FAILURE, Functions::getState, state);
}

uint8_t IccPlugin::iccGetIccHwId() {
    return callOr(uint8_t{255}, Functions::getHwId);
}

void IccPlugin::iccStartUartLog() {
    if (!tryCall(Functions::startUartLog)) Log::d(TAG, "iccStartUartLog Invalid loadIccApisPlugin");
}

}  // namespace hal
