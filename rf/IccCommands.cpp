#include "rf/IccCommands.h"

#include "component/SubsysInterfaceData.h"
#include "rf/IccProxy.h"

#include <mindroid/Log.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

using mindroid::ByteArray;
using mindroid::Log;
using mindroid::Message;
using mindroid::Object;
using mindroid::sp;

namespace hal {

namespace {

constexpr const char* TAG = IccProxy::TAG;

constexpr uint32_t WIFI_ANT_COMMAND = 42;
constexpr size_t WIFI_ANT_REQUEST_SIZE = 129;
constexpr uint32_t WIFI_ANT_TIMEOUT_MS = 1000;

constexpr int32_t FIRST_EXT_REQ_ID = 1000;
constexpr size_t SYNC_RESPONSE_SIZE = 256;
constexpr uint32_t MAX_SYNC_TIMEOUT_MS = 4000;

// Outside the range of the interface: it reaches the client as a generic failure.
constexpr SUBSYS_Errno INTERNAL_ERROR_11 = static_cast<SUBSYS_Errno>(11);

// Deliberate: not the mapping of getIccStateError. Clients of the direct requests are told every failure.
SUBSYS_Errno shortError(spi_cmd_err_code_e code) {
    if (code == SPI_CMD_SUCCESS) return SUBSYS_Errno::SUCCESS;
    return code == SPI_CMD_NOT_SUPPORT ? SUBSYS_Errno::NOT_SUPPORTED : SUBSYS_Errno::GENERIC_FAILURE;
}

std::string hexText(const std::vector<uint8_t>& bytes) {
    return ByteArray(bytes.data(), bytes.size()).toString();
}

}  // namespace

// ---- Settings

void IccCommands::setTxSharingState(uint8_t enable, const std::vector<uint16_t>& band,
                                    const std::vector<uint16_t>& param1, const std::vector<uint8_t>& param2) {
    Log::d(TAG, "setTxSharingState ret: %d", mPlugin.iccSetTxSharingState(enable, band, param1, param2));
}

void IccCommands::setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    Log::d(TAG, "setAclState ret: %d", mPlugin.iccSetAclState(enable, freq, cc, ant));
}

void IccCommands::setScreenState(bool on) {
    mPlugin.setScreenState(on);
}

void IccCommands::sendIccEventInd(uint32_t event, const sp<ByteArray>& data) {
    if (!mPlugin.loadIccApisPlugin()) return;
    Log::d(TAG, "sendIccEventInd %d data %s", static_cast<int>(event), data->toString().c_str());
    std::vector<uint8_t> bytes = data->value();
    mPlugin.sendIccEventInd(event, bytes.data(), static_cast<uint16_t>(bytes.size()));
}

// ---- Requests

void IccCommands::setIccWifiAntState(int32_t antenna, int32_t state, const sp<Message>& reply) {
    std::array<uint8_t, WIFI_ANT_REQUEST_SIZE> request = {static_cast<uint8_t>(antenna), static_cast<uint8_t>(state)};
    uint8_t status = SPI_CMD_FAILURE;
    if (!mPlugin.iccSendReqSync(WIFI_ANT_COMMAND, request.data(), request.size(), &status, sizeof(status),
                                WIFI_ANT_TIMEOUT_MS)) {
        SubsysComponent::sendResponse(reply, SUBSYS_Errno::GENERIC_FAILURE);
        return;
    }
    // Deliberate: whatever the plugin answered, the request counts as not supported. Clients know it so.
    Log::e(TAG, "setWifiAntState failed, SPI_CMD_NOT_SUPPORT");
    SubsysComponent::sendResponse(reply, shortError(SPI_CMD_NOT_SUPPORT));
}

void IccCommands::setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state,
                                          const sp<Message>& reply) {
    const SUBSYS_Errno error = shortError(mPlugin.iccSetSatelliteAntState(technology, antenna, state));
    Log::d(TAG, "setIccSatelliteAntState ret: %d", static_cast<int>(error));
    SubsysComponent::sendResponse(reply, error);
}

void IccCommands::getIccState(const sp<Message>& reply) {
    // Deliberate: the plugin gets a copy, so the answer is all zero. Clients know it so.
    const IccStateInfoType state = {};
    const SUBSYS_Errno error = shortError(mPlugin.getIccState(state));
    SubsysComponent::sendResponse(reply, error, sp<Object>(new SubsysInterfaceData<IccStateInfoType>(state)));
}

void IccCommands::sendIccCmdSync(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs,
                                 const sp<Message>& reply) {
    Log::d(TAG, "sendIccCmd req id %d data %s", reqId, hexText(data).c_str());
    // Unsigned, so that a negative timeout is the longest.
    const uint32_t timeout = std::min(static_cast<uint32_t>(timeoutMs), MAX_SYNC_TIMEOUT_MS);
    std::vector<uint8_t> response(SYNC_RESPONSE_SIZE);
    if (!mPlugin.iccSendReqSync(static_cast<uint32_t>(reqId), data.data(), static_cast<uint32_t>(data.size()),
                                response.data(), SYNC_RESPONSE_SIZE, timeout)) {
        Log::e(TAG, "sendIccCmd err");
        SubsysComponent::sendResponse(reply, SUBSYS_Errno::GENERIC_FAILURE);
        return;
    }
    const sp<ByteArray> bytes = new ByteArray(std::move(response));
    Log::d(TAG, "sendIccCmd resp %s", bytes->toString().c_str());
    SubsysComponent::sendResponse(reply, SUBSYS_Errno::SUCCESS, sp<Object>(bytes));
}

void IccCommands::sendIccCmdExt(int32_t reqId, const std::vector<uint8_t>& data, const sp<Message>& reply) {
    Log::d(TAG, "sendIccCmdExt req id %d", reqId);
    const ExtResult result = runExtCommand(reqId, data);
    Log::d(TAG, "sendIccCmdExt req id %d ret %d", reqId, static_cast<int>(result.error));
    SubsysComponent::sendResponse(reply, result.error, result.value);
}

// ---- The service's own commands

struct IccCommands::ExtCommand {
    // A shorter payload is a generic failure.
    size_t minSize;
    ExtResult (IccCommands::*run)(const std::vector<uint8_t>& data);
};

IccCommands::ExtResult IccCommands::runExtCommand(int32_t reqId, const std::vector<uint8_t>& data) {
    static constexpr std::array<ExtCommand, 6> COMMANDS = {{
        {5, &IccCommands::extSetAclState},
        {0, &IccCommands::extReloadConfig},
        {3, &IccCommands::extSetSatelliteAntState},
        {4, &IccCommands::extSetCoexAntState},
        {0, &IccCommands::extGetHwId},
        {0, &IccCommands::extStartUartLog},
    }};
    const auto index = static_cast<uint32_t>(reqId) - FIRST_EXT_REQ_ID;
    if (index >= COMMANDS.size()) {
        Log::d(TAG, "sendIccCmdExt unknown reqId %d", reqId);
        return {SUBSYS_Errno::NOT_SUPPORTED};
    }
    const ExtCommand& command = COMMANDS[index];
    return data.size() < command.minSize ? ExtResult{SUBSYS_Errno::GENERIC_FAILURE} : (this->*command.run)(data);
}

IccCommands::ExtResult IccCommands::extSetAclState(const std::vector<uint8_t>& data) {
    const auto freq = static_cast<uint16_t>(data[1] | data[2] << 8);
    return {getIccStateError(mPlugin.iccSetAclState(data[0], freq, data[3], data[4]))};
}

IccCommands::ExtResult IccCommands::extReloadConfig(const std::vector<uint8_t>&) {
    return {mPlugin.iccReloadConfig() ? SUBSYS_Errno::SUCCESS : SUBSYS_Errno::GENERIC_FAILURE};
}

IccCommands::ExtResult IccCommands::extSetSatelliteAntState(const std::vector<uint8_t>& data) {
    return {getIccStateError(mPlugin.iccSetSatelliteAntState(data[0], data[1], data[2]))};
}

IccCommands::ExtResult IccCommands::extSetCoexAntState(const std::vector<uint8_t>& data) {
    return {getIccStateError(mPlugin.iccSetCoexAntState(data[0], data[1], data[2], data[3]))};
}

IccCommands::ExtResult IccCommands::extGetHwId(const std::vector<uint8_t>&) {
    const uint8_t id = mPlugin.iccGetIccHwId();
    return {SUBSYS_Errno::SUCCESS, new ByteArray(&id, sizeof(id))};
}

IccCommands::ExtResult IccCommands::extStartUartLog(const std::vector<uint8_t>&) {
    mPlugin.iccStartUartLog();
    return {SUBSYS_Errno::SUCCESS};
}

SUBSYS_Errno IccCommands::getIccStateError(spi_cmd_err_code_e code) {
    switch (code) {
        case SPI_CMD_FAILURE:
            return SUBSYS_Errno::GENERIC_FAILURE;
        case SPI_CMD_FAILURE_4:
            return INTERNAL_ERROR_11;
        case SPI_CMD_NOT_SUPPORT:
            return SUBSYS_Errno::NOT_SUPPORTED;
        default:
            // Deliberate: all other failures count as success. Clients of the commands above 254.
            return SUBSYS_Errno::SUCCESS;
    }
}

}  // namespace hal
