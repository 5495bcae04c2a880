// What the service and its plugins were built against: the type of each function and the place of each field. Checked
// by the compiler.
#include "rf/IccPluginApi.h"

#include <cstddef>
#include <type_traits>

static_assert(sizeof(IccEventType) == 4 && sizeof(spi_cmd_err_code_e) == 1 && sizeof(ICC_APIS_RESULT) == 4);
static_assert(std::is_same_v<IccEventCallback, void (*)(IccEventType, void*, void*, int)>);
static_assert(std::is_same_v<decltype(iccApis_init), void(uint8_t, uint32_t, uint8_t)>);
static_assert(std::is_same_v<decltype(registerIccEvent), ICC_APIS_RESULT(IccEventType, void*, IccEventCallback)>);
static_assert(std::is_same_v<decltype(iccSendReqSync), void(uint32_t, void*, uint32_t, void*, uint32_t, uint32_t)>);
static_assert(std::is_same_v<decltype(iccSetSatelliteAntState), spi_cmd_err_code_e(int, int, int)>);
static_assert(
    std::is_same_v<decltype(iccSetTxSharingState),
                   spi_cmd_err_code_e(uint8_t, std::vector<uint16_t>, std::vector<uint16_t>, std::vector<uint8_t>)>);
static_assert(std::is_same_v<decltype(iccSetAclState), spi_cmd_err_code_e(uint8_t, uint16_t, uint8_t, uint8_t)>);
static_assert(std::is_same_v<decltype(iccSetCoexAntState), spi_cmd_err_code_e(uint8_t, uint8_t, uint8_t, uint8_t)>);
static_assert(std::is_same_v<decltype(iccGetHwId), uint8_t()>);
static_assert(std::is_same_v<decltype(enableIccUartLog), void()>);
static_assert(std::is_same_v<decltype(iccReloadConfig), void()>);
static_assert(std::is_same_v<decltype(setScreenState), void(bool)>);
static_assert(std::is_same_v<decltype(getIccState), spi_cmd_err_code_e(IccStateInfoType)>);
static_assert(std::is_same_v<decltype(sendIccEventInd), void(uint32_t, uint8_t*, uint16_t)>);

static_assert(offsetof(IccStateInfoType, iccState) == 0 && offsetof(IccStateInfoType, bypass) == 4);
static_assert(offsetof(IccStateInfoType, modeNum) == 5 && offsetof(IccStateInfoType, modes) == 6);
static_assert(offsetof(IccAclStatusRspMsgType, freq) == 0 && offsetof(IccAclStatusRspMsgType, ant) == 3);
static_assert(offsetof(IccAclStatusRspMsgType, ui) == 4 && offsetof(IccAclStatusRspMsgType, gamma) == 8);
static_assert(offsetof(IccDeviceErrType, devNum) == 0 && offsetof(IccDeviceErrType, id) == 1);
static_assert(offsetof(IccDeviceErrType, err) == 2);
static_assert(offsetof(IccPercEntryType, value0) == 0 && offsetof(IccPercEntryType, value1) == 1);
static_assert(offsetof(IccPercEntryType, value2) == 2);
static_assert(offsetof(IccPercStateType, size) == 0 && offsetof(IccPercStateType, entries) == 4);
static_assert(offsetof(IccCoexAntType, tech) == 0 && offsetof(IccCoexAntType, chain) == 1);
static_assert(offsetof(IccCoexAntType, state) == 2 && offsetof(IccCoexAntType, config) == 3);
static_assert(offsetof(IccIndInfoType, type) == 0 && offsetof(IccIndInfoType, data) == 4);
static_assert(offsetof(IccIndInfoType, length) == 260);
