#include "simulator/IccDevice.h"

#include <android/log.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <thread>

#define LOG_D(...) __android_log_print(ANDROID_LOG_DEBUG, "iccapis", __VA_ARGS__)

namespace simulator {

namespace {

constexpr uint8_t HW_ID = 0x51;
constexpr uint32_t WIFI_ANT_REQUEST = 42;
constexpr uint32_t STATE_ACTIVE = 1;
constexpr uint32_t STATE_IDLE = 2;

enum Request : size_t {
    INIT,
    REGISTER_EVENT,
    SEND_REQ_SYNC,
    SET_SATELLITE_ANT_STATE,
    SET_TX_SHARING_STATE,
    SET_ACL_STATE,
    SET_COEX_ANT_STATE,
    GET_HW_ID,
    ENABLE_UART_LOG,
    RELOAD_CONFIG,
    SET_SCREEN_STATE,
    GET_STATE,
    SEND_EVENT_IND,
};

constexpr Field RESPONSE_FIELDS[] = {{"data", Field::HEX, 0, sizeof(IccResponse), 1}};

constexpr unsigned ANY = DELAY | SILENT;
constexpr RequestKind REQUESTS[] = {
    {"iccApis_init", ANY, 0},
    {"registerIccEvent", ANY, 4},
    {"iccSendReqSync", ANY | SHORT, 1, RESPONSE_FIELDS},
    {"iccSetSatelliteAntState", ANY, 1},
    {"iccSetTxSharingState", ANY, 1},
    {"iccSetAclState", ANY, 1},
    {"iccSetCoexAntState", ANY, 1},
    {"iccGetHwId", ANY, 1},
    {"enableIccUartLog", ANY, 0},
    {"iccReloadConfig", ANY, 0},
    {"setScreenState", ANY, 0},
    {"getIccState", ANY, 1},
    {"sendIccEventInd", ANY, 0},
};

static_assert(std::size(REQUESTS) == SEND_EVENT_IND + 1);

constexpr Field STATE_FIELDS[] = {
    SIMULATOR_FIELD(IccStateInfoType, iccState),
    SIMULATOR_FIELD(IccStateInfoType, bypass),
    SIMULATOR_FIELD(IccStateInfoType, modeNum),
    SIMULATOR_HEX_FIELD(IccStateInfoType, modes),
};
constexpr Field CLAT_FIELDS[] = {
    SIMULATOR_FIELD(IccAclStatusRspMsgType, freq),
    SIMULATOR_FIELD(IccAclStatusRspMsgType, ant),
    SIMULATOR_FIELD(IccAclStatusRspMsgType, ui),
    SIMULATOR_FIELD(IccAclStatusRspMsgType, gamma),
};
constexpr Field ERROR_FIELDS[] = {
    SIMULATOR_FIELD(IccDeviceErrType, devNum),
    SIMULATOR_FIELD(IccDeviceErrType, id),
    SIMULATOR_FIELD(IccDeviceErrType, err),
};
constexpr Field PERC_FIELDS[] = {
    SIMULATOR_FIELD(IccPercStateType, size),
    SIMULATOR_HEX_FIELD(IccPercStateType, entries),
};
constexpr Field COEX_FIELDS[] = {
    SIMULATOR_FIELD(IccCoexAntType, tech),
    SIMULATOR_FIELD(IccCoexAntType, chain),
    SIMULATOR_FIELD(IccCoexAntType, state),
    SIMULATOR_FIELD(IccCoexAntType, config),
};

// Entry i is event type i + 1.
constexpr EventKind EVENTS[] = {
    {"state", sizeof(IccStateInfoType), STATE_FIELDS}, {"clat", sizeof(IccAclStatusRspMsgType), CLAT_FIELDS},
    {"error", sizeof(IccDeviceErrType), ERROR_FIELDS}, {"perc", sizeof(IccPercStateType), PERC_FIELDS},
    {"coexAnt", sizeof(IccCoexAntType), COEX_FIELDS},
};
static_assert(std::size(EVENTS) == ICC_EVENT_COEX_ANT_CHANGED);

constexpr Vocabulary VOCABULARY = {"icc", REQUESTS, EVENTS, true};

std::string toHex(const uint8_t* bytes, size_t size) {
    constexpr const char* DIGITS = "0123456789abcdef";
    // As many as one log line bears.
    const size_t shown = bytes == nullptr ? 0 : std::min<size_t>(size, 256);
    std::string text;
    for (size_t i = 0; i < shown; ++i) text.append({DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 15]});
    return shown < size ? text + "..." : text;
}

template <typename T>
std::string toText(const std::vector<T>& values) {
    std::string text;
    for (const T value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
    return text;
}

template <typename T, size_t size>
void keep(const std::vector<T>& values, T (&kept)[size]) {
    std::fill(std::begin(kept), std::end(kept), T{});
    std::copy_n(values.begin(), std::min(values.size(), size), kept);
}

void sleepMillis(int64_t millis) {
    if (millis > 0) std::this_thread::sleep_for(std::chrono::milliseconds(millis));
}

}  // namespace

IccDevice& IccDevice::get() {
    static IccDevice& sDevice = *new IccDevice();
    return sDevice;
}

IccDevice::IccDevice()
    : mPlayer(
          VOCABULARY,
          [this](int64_t delayMillis, ScenarioPlayer::Task task) { mEvents.post(delayMillis, std::move(task)); },
          [this](const ScenarioEvent& event) { play(event); }) {
    mPlayer.start();
}

void IccDevice::init(uint8_t version, uint32_t speed, uint8_t brindle) {
    LOG_D("iccApis_init version %d speed %u brindle %d", version, speed, brindle);
    serve(INIT, [&](State& current) { current.version = version; });
}

ICC_APIS_RESULT IccDevice::registerEvent(IccEventType type, void* context, IccEventCallback callback) {
    LOG_D("registerIccEvent %u", type);
    if (type < 1 || type > ICC_EVENT_COEX_ANT_CHANGED || callback == nullptr) return ICC_APIS_FAILURE;
    const Reaction reaction = serve(REGISTER_EVENT, [&](State& current) {
        current.listeners[type - 1] = {context, callback};
    });
    return static_cast<ICC_APIS_RESULT>(reaction.answer.code.value_or(ICC_APIS_SUCCESS));
}

void IccDevice::sendRequest(uint32_t reqId, const uint8_t* req, uint32_t reqLen, void* resp, uint32_t respLen,
                            uint32_t timeoutMs) {
    if (req == nullptr) reqLen = 0;
    LOG_D("iccSendReqSync %u, %u bytes %s, timeout %u", reqId, reqLen, toHex(req, reqLen).c_str(), timeoutMs);
    const Reaction reaction = react(SEND_REQ_SYNC, [&](State& current) {
        if (reqId == WIFI_ANT_REQUEST && reqLen >= 2) current.modes[WIFI_ANT] = req[1];
    });
    if (reaction.answer.silent) {
        sleepMillis(timeoutMs);
    } else if (resp != nullptr) {
        const IccResponse response = makeResponse(reqId, req, reqLen, reaction.answer);
        const size_t size = std::min({sizeof(response), size_t{respLen}, reaction.answer.shortTo.value_or(respLen)});
        std::memcpy(resp, &response, size);
    }
    mPlayer.play(reaction);
}

IccResponse IccDevice::makeResponse(uint32_t reqId, const uint8_t* req, uint32_t reqLen, const ScenarioAnswer& answer) {
    const device::MutexLock lock(mLock);
    IccResponse response{};
    response.status = static_cast<uint8_t>(answer.code.value_or(0));
    response.hwId = HW_ID;
    response.version = mState.version;
    response.flags = static_cast<uint8_t>((mState.isScreenOn ? 1 : 0) | (mState.isUartLogOn ? 2 : 0));
    response.reqId = reqId;
    std::copy(mState.modes.begin(), mState.modes.end(), response.modes);
    response.echoLength = static_cast<uint8_t>(std::min<size_t>(reqLen, sizeof(response.echo)));
    std::copy_n(req, response.echoLength, response.echo);
    response.satelliteTechnology = mState.satelliteTechnology;
    response.satelliteAntenna = mState.satelliteAntenna;
    std::copy_n(mState.txBands, 2, response.txBands);
    std::copy_n(mState.txParam1, 2, response.txParam1);
    std::copy_n(mState.txParam2, 2, response.txParam2);
    applyFields(answer.fields, &response);
    return response;
}

spi_cmd_err_code_e IccDevice::setSatelliteAntState(int technology, int antenna, int state) {
    LOG_D("iccSetSatelliteAntState technology %d antenna %d state %d", technology, antenna, state);
    return command(SET_SATELLITE_ANT_STATE, [&](State& current) {
        current.modes[SATELLITE_ANT] = static_cast<uint8_t>(state);
        current.satelliteTechnology = static_cast<uint8_t>(technology);
        current.satelliteAntenna = static_cast<uint8_t>(antenna);
    });
}

spi_cmd_err_code_e IccDevice::setTxSharingState(uint8_t enable, const std::vector<uint16_t>& band,
                                                const std::vector<uint16_t>& param1,
                                                const std::vector<uint8_t>& param2) {
    LOG_D("iccSetTxSharingState enable %d band %s param1 %s param2 %s", enable, toText(band).c_str(),
          toText(param1).c_str(), toText(param2).c_str());
    return command(SET_TX_SHARING_STATE, [&](State& current) {
        current.modes[TX_SHARING] = enable;
        keep(band, current.txBands);
        keep(param1, current.txParam1);
        keep(param2, current.txParam2);
    });
}

spi_cmd_err_code_e IccDevice::setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    LOG_D("iccSetAclState enable %d freq %d cc %d ant %d", enable, freq, cc, ant);
    return command(SET_ACL_STATE, [&](State& current) {
        current.modes[ACL] = enable;
        IccAclStatusRspMsgType status{};
        status.freq = freq;
        status.ant = ant;
        status.ui = enable;
        status.gamma = cc;
        report(ICC_EVENT_CLAT_STATE, status);
    });
}

spi_cmd_err_code_e IccDevice::setCoexAntState(const IccCoexAntType& state) {
    LOG_D("iccSetCoexAntState tech %d chain %d state %d config %d", state.tech, state.chain, state.state, state.config);
    return command(SET_COEX_ANT_STATE, [&](State& current) {
        current.modes[COEX_ANT] = static_cast<uint8_t>(state.state);
        report(ICC_EVENT_COEX_ANT_CHANGED, state);
    });
}

uint8_t IccDevice::getHwId() {
    LOG_D("iccGetHwId");
    const Reaction reaction = serve(GET_HW_ID, [](State&) {});
    return static_cast<uint8_t>(reaction.answer.code.value_or(reaction.answer.silent ? 0 : HW_ID));
}

void IccDevice::enableUartLog() {
    LOG_D("enableIccUartLog");
    serve(ENABLE_UART_LOG, [&](State& current) { current.isUartLogOn = true; });
}

void IccDevice::reloadConfig() {
    LOG_D("iccReloadConfig");
    serve(RELOAD_CONFIG, [&](State& current) { current.modes = {}; });
}

void IccDevice::setScreenState(bool on) {
    LOG_D("setScreenState %d", on);
    serve(SET_SCREEN_STATE, [&](State& current) { current.isScreenOn = on; });
}

spi_cmd_err_code_e IccDevice::getState() {
    LOG_D("getIccState");
    return command(GET_STATE, [](State&) {});
}

void IccDevice::sendEventInd(uint32_t event, const uint8_t* data, uint16_t size) {
    LOG_D("sendIccEventInd %u, %u bytes %s", event, size, toHex(data, size).c_str());
    serve(SEND_EVENT_IND, [&](State&) {
        IccPercStateType perception{};
        perception.size = 1;
        perception.entries[0].value0 = static_cast<uint8_t>(event);
        perception.entries[0].value1 = data != nullptr && size > 0 ? data[0] : 0;
        perception.entries[0].value2 = static_cast<uint8_t>(size);
        report(ICC_EVENT_PERC_CHANGED, perception);
    });
}

Reaction IccDevice::serve(size_t request, const Effect& effect) {
    Reaction reaction = react(request, effect);
    mPlayer.play(reaction);
    return reaction;
}

Reaction IccDevice::react(size_t request, const Effect& effect) {
    Reaction reaction = mPlayer.react(request);
    sleepMillis(reaction.delayMillis());
    if (!reaction.answer.silent && reaction.isSuccess()) apply(effect);
    return reaction;
}

spi_cmd_err_code_e IccDevice::command(size_t request, const Effect& effect) {
    return static_cast<spi_cmd_err_code_e>(serve(request, effect).answer.code.value_or(SPI_CMD_SUCCESS));
}

void IccDevice::apply(const Effect& effect) {
    const device::MutexLock lock(mLock);
    const IccStateInfoType before = mState.info();
    effect(mState);
    const IccStateInfoType after = mState.info();
    if (std::memcmp(&before, &after, sizeof(after)) != 0) report(ICC_EVENT_STATE_CHANGED, after);
}

IccStateInfoType IccDevice::State::info() const {
    IccStateInfoType state{};
    state.iccState = static_cast<IccStateType>(isScreenOn ? STATE_ACTIVE : STATE_IDLE);
    state.modeNum = MODE_COUNT;
    for (size_t i = 0; i < modes.size(); ++i) {
        state.modes[2 * i] = static_cast<uint8_t>(i + 1);
        state.modes[2 * i + 1] = modes[i];
    }
    return state;
}

template <typename T>
void IccDevice::report(IccEventType type, const T& record) {
    mEvents.post(0, [this, type, copy = record]() mutable { deliver(type, &copy, sizeof(copy)); });
}

void IccDevice::play(const ScenarioEvent& event) {
    std::vector<uint8_t> record(EVENTS[event.kind].recordSize);
    const auto type = static_cast<IccEventType>(event.kind + 1);
    if (type == ICC_EVENT_STATE_CHANGED) {
        const device::MutexLock lock(mLock);
        const IccStateInfoType state = mState.info();
        std::memcpy(record.data(), &state, sizeof(state));
    }
    applyFields(event.fields, record.data());
    record.resize(event.bytes.value_or(record.size()));
    // Of the size that it is told to have and not a byte more, so that a listener that reads on is found out.
    record.shrink_to_fit();
    deliver(type, event.null ? nullptr : record.data(), static_cast<int>(record.size()));
}

void IccDevice::deliver(IccEventType type, void* data, int size) {
    Listener listener{};
    {
        const device::MutexLock lock(mLock);
        listener = mState.listeners[type - 1];
    }
    LOG_D("event %u, %d bytes%s", type, size, listener.callback == nullptr ? ", nobody registered" : "");
    if (listener.callback != nullptr) listener.callback(type, listener.context, data, size);
}

}  // namespace simulator
