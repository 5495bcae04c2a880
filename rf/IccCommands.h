#pragma once

#include "component/SubsysComponent.h"
#include "rf/IccPlugin.h"

#include <mindroid/Boxes.h>
#include <mindroid/Message.h>

#include <cstdint>
#include <vector>

namespace hal {

// What the commands of the ICC proxy do on its thread; see the operations of the same names there. All: proxy.
class IccCommands {
public:
    explicit IccCommands(IccPlugin& plugin) : mPlugin(plugin) {}

    void setTxSharingState(uint8_t enable, const std::vector<uint16_t>& band, const std::vector<uint16_t>& param1,
                           const std::vector<uint8_t>& param2);
    void setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant);
    void setScreenState(bool on);
    void sendIccEventInd(uint32_t event, const mindroid::sp<mindroid::ByteArray>& data);

    void setIccWifiAntState(int32_t antenna, int32_t state, const mindroid::sp<mindroid::Message>& reply);
    void setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state,
                                 const mindroid::sp<mindroid::Message>& reply);
    void getIccState(const mindroid::sp<mindroid::Message>& reply);
    void sendIccCmdSync(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs,
                        const mindroid::sp<mindroid::Message>& reply);
    void sendIccCmdExt(int32_t reqId, const std::vector<uint8_t>& data, const mindroid::sp<mindroid::Message>& reply);

    // The outcome of a command as the commands above 254 report it. Thread: any.
    [[nodiscard]] static SUBSYS_Errno getIccStateError(spi_cmd_err_code_e code);

private:
    struct ExtResult {
        SUBSYS_Errno error;
        mindroid::sp<mindroid::Object> value = nullptr;
    };
    struct ExtCommand;

    ExtResult runExtCommand(int32_t reqId, const std::vector<uint8_t>& data);
    ExtResult extSetAclState(const std::vector<uint8_t>& data);
    ExtResult extReloadConfig(const std::vector<uint8_t>& data);
    ExtResult extSetSatelliteAntState(const std::vector<uint8_t>& data);
    ExtResult extSetCoexAntState(const std::vector<uint8_t>& data);
    ExtResult extGetHwId(const std::vector<uint8_t>& data);
    ExtResult extStartUartLog(const std::vector<uint8_t>& data);

    IccPlugin& mPlugin;
};

}  // namespace hal
