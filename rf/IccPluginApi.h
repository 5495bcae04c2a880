#pragma once

// What an ICC plugin ("libiccapis") exports, and the records and codes that it shares with the service. This header is
// all that a plugin needs: include it and define the functions declared at its end, with nothing changed in their
// types. Defining them exports them, under -fvisibility=hidden too.
//
// The service opens the library that the plugin configuration names "libiccapis", once, and never closes it. It enters
// the plugin from one thread only and calls one function at a time; a function that takes long delays what queues
// behind it. A function that the library does not export is skipped: where it has a result, it counts as 0. One that
// throws ends the process.
//
// A std::vector is handed over by value: build the plugin with the service's C++ library and ABI.
//
// Records are little-endian and have the sizes asserted here. The service reads the named fields; all other bytes
// travel to its listeners unchanged.

#include <cstddef>
#include <cstdint>
#include <vector>

// What a plugin may report, see registerIccEvent. The service asks for types 1, 4 and 5 when a client connects, for 2
// and 3 only if a component of the device listens to them.
enum IccEventType : uint32_t {
    ICC_EVENT_STATE_CHANGED = 1,     // IccStateInfoType
    ICC_EVENT_CLAT_STATE = 2,        // IccAclStatusRspMsgType
    ICC_EVENT_DEVICE_ERR = 3,        // IccDeviceErrType
    ICC_EVENT_PERC_CHANGED = 4,      // IccPercStateType
    ICC_EVENT_COEX_ANT_CHANGED = 5,  // IccCoexAntType
};

// Result of the command functions. Other values may be used; which of them reach the client as an error depends on the
// command.
enum spi_cmd_err_code_e : uint8_t {
    SPI_CMD_SUCCESS = 0,
    SPI_CMD_FAILURE = 1,
    SPI_CMD_FAILURE_4 = 4,
    SPI_CMD_NOT_SUPPORT = 7,
};

// Result of registerIccEvent. The service ignores it.
enum ICC_APIS_RESULT : int32_t {
    ICC_APIS_SUCCESS = 0,
    ICC_APIS_FAILURE = 1,
};

inline constexpr size_t ICC_MAX_MODES = 7;
inline constexpr size_t ICC_MAX_PERC_ENTRIES = 10;
inline constexpr size_t ICC_INFO_CAPACITY = 256;

// Its values belong to the plugin; the low byte reaches the client.
enum IccStateType : uint32_t {};

struct IccStateInfoType {
    IccStateType iccState;
    uint8_t bypass;
    uint8_t modeNum;  // at most ICC_MAX_MODES
    // In ICC_EVENT_STATE_CHANGED modeNum pairs of type and value; in the answer to a state query all types, then, from
    // entry ICC_MAX_MODES on, all values.
    uint8_t modes[2 * ICC_MAX_MODES];
};
static_assert(sizeof(IccStateInfoType) == 20);

struct IccAclStatusRspMsgType {
    uint16_t freq;
    uint8_t reserved2;
    uint8_t ant;
    uint8_t ui;
    uint8_t reserved5[3];
    uint8_t gamma;
    uint8_t reserved9[11];
};
static_assert(sizeof(IccAclStatusRspMsgType) == 20);

struct IccDeviceErrType {
    uint8_t devNum;
    uint8_t id;
    uint8_t err;
    uint8_t reserved3[33];
};
static_assert(sizeof(IccDeviceErrType) == 36);

struct IccPercEntryType {
    uint8_t value0;
    uint8_t value1;
    uint8_t value2;
};
static_assert(sizeof(IccPercEntryType) == 3);

struct IccPercStateType {
    uint32_t size;  // the number of entries, at most ICC_MAX_PERC_ENTRIES
    IccPercEntryType entries[ICC_MAX_PERC_ENTRIES];
    uint8_t reserved34[2];
};
static_assert(sizeof(IccPercStateType) == 36);

struct IccCoexAntType {
    uint8_t tech;
    uint8_t chain;
    int8_t state;
    int8_t config;
};
static_assert(sizeof(IccCoexAntType) == 4);

// What listeners get for ICC_EVENT_COEX_ANT_CHANGED; built by the service, not by the plugin.
struct IccIndInfoType {
    uint32_t type;
    uint8_t data[ICC_INFO_CAPACITY];
    uint32_t length;  // bytes of data in use
};
static_assert(sizeof(IccIndInfoType) == 264);

// The service's entry for events, handed to registerIccEvent. Any thread, at any time from then on, also while the
// service is inside the plugin. `data` holds `size` bytes, at least the record of the event, which is copied before the
// call returns. An event shorter than its record is dropped with an error line.
using IccEventCallback = void (*)(IccEventType type, void* context, void* data, int size);

#pragma GCC visibility push(default)
extern "C" {

// `speed` is the bus speed in Hz.
void iccApis_init(uint8_t version, uint32_t speed, uint8_t brindle);

// Asks for the events of one type. May come again for the same type, with the same context: the latest one counts.
// `context` goes back with each event and stays valid until the process ends.
ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback);

// Sends a command and writes up to `respLen` bytes of its answer to `resp`. Both buffers belong to the caller and end
// with the call. `req` may be null when `reqLen` is 0. Returns after `timeoutMs` milliseconds at the latest.
void iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen, uint32_t timeoutMs);

spi_cmd_err_code_e iccSetSatelliteAntState(int technology, int antenna, int state);

// Entry i of each vector belongs to combination i of the sharing pair.
spi_cmd_err_code_e iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                        std::vector<uint8_t> param2);

spi_cmd_err_code_e iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant);

spi_cmd_err_code_e iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config);

uint8_t iccGetHwId();

void enableIccUartLog();

void iccReloadConfig();

void setScreenState(bool on);

// Gets a copy of the record: what the plugin writes to it reaches nobody. Only the result counts.
spi_cmd_err_code_e getIccState(IccStateInfoType state);

// `data` holds `size` bytes and ends with the call; it may be null when `size` is 0.
void sendIccEventInd(uint32_t event, uint8_t* data, uint16_t size);

}  // extern "C"
#pragma GCC visibility pop
