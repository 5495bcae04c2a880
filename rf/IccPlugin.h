#pragma once

#include "rf/IccPluginApi.h"

#include <cstdint>
#include <type_traits>
#include <vector>

namespace hal {

class Plugin;

// The typed calls into the ICC plugin. Each loads the plugin first, and says by its result when that failed. A function
// that the plugin lacks is skipped and counts as one that returned 0. All: proxy.
class IccPlugin {
public:
    // Whether the plugin is there to be called. Tries again each time until it is.
    bool loadIccApisPlugin();
    // Whether calls reach the plugin. They do not for an object that found the plugin loaded by another one.
    [[nodiscard]] bool isReachable() const { return mPlugin != nullptr; }

    // False when the plugin can't be loaded.
    bool iccApisInit(uint8_t version, uint32_t speed, uint8_t brindle);
    bool registerIccEvent(IccEventType type, void* context, IccEventCallback callback);
    bool iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen, uint32_t timeoutMs);
    bool iccReloadConfig();
    bool setScreenState(bool on);
    bool sendIccEventInd(uint32_t event, uint8_t* data, uint16_t size);

    // SPI_CMD_FAILURE when the plugin can't be loaded.
    spi_cmd_err_code_e iccSetSatelliteAntState(int technology, int antenna, int state);
    spi_cmd_err_code_e iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                            std::vector<uint8_t> param2);
    spi_cmd_err_code_e iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant);
    spi_cmd_err_code_e iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config);
    spi_cmd_err_code_e getIccState(const IccStateInfoType& state);

    // 255 when the plugin can't be loaded.
    uint8_t iccGetIccHwId();
    // Logs when the plugin can't be loaded.
    void iccStartUartLog();

private:
    // A plugin function: its symbol and its exact type, and the name of its section in the trace.
    template <typename Signature>
    struct Function {
        const char* symbol;
        const char* section;
    };
    struct Functions;

    // R() where the plugin lacks the function.
    template <typename R, typename... Args>
    R call(Function<R(Args...)> function, std::type_identity_t<Args>... args);
    // The fallback stands for the result when the plugin can't be loaded.
    template <typename R, typename... Args>
    R callOr(R fallback, Function<R(Args...)> function, std::type_identity_t<Args>... args);
    // The same for a function without result: whether the plugin is there.
    template <typename... Args>
    bool tryCall(Function<void(Args...)> function, std::type_identity_t<Args>... args);

    // Null until this object has loaded the plugin, and then never freed.
    Plugin* mPlugin = nullptr;
};

}  // namespace hal
