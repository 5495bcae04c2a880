#include "rf/IccProxy.h"

#include "component/SubsysInterfaceData.h"
#include "plugin/PluginManagerComponent.h"
#include "rf/IccEvent.h"

#include <android/log.h>
#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <utility>

using mindroid::ByteArray;
using mindroid::Handler;
using mindroid::HandlerThread;
using mindroid::Log;
using mindroid::Looper;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
using mindroid::Runnable;
using mindroid::sp;
using mindroid::static_object_cast;

extern "C" void iccStateEventCallback(IccEventType type, void* context, void* data, int size) {
    if (context == nullptr) {
        Log::e(hal::IccProxy::TAG, "iccStateEventCallback error proxy %llx, event %d", 0ULL, static_cast<int>(type));
        return;
    }
    static_cast<hal::IccProxy*>(context)->processIccStateEvent(type, data, size);
}

namespace hal {

namespace {

constexpr const char* PLUGIN_NAME = "libiccapis";
// Added to an event's type, gives the `what` of its message.
constexpr uint32_t EVENT_MESSAGE_BASE = 1000;

constexpr uint32_t WIFI_ANT_COMMAND = 42;
constexpr size_t WIFI_ANT_REQUEST_SIZE = 129;
constexpr uint32_t WIFI_ANT_TIMEOUT_MS = 1000;

constexpr int32_t MAX_SYNC_REQ_ID = 254;
constexpr int32_t FIRST_EXT_REQ_ID = 1000;
constexpr size_t SYNC_RESPONSE_SIZE = 256;
constexpr uint32_t MAX_SYNC_TIMEOUT_MS = 4000;

constexpr size_t MAX_WAITING_EVENTS = 16384;

// Outside the range of the interface: it reaches the client as a generic failure.
constexpr SUBSYS_Errno INTERNAL_ERROR_11 = static_cast<SUBSYS_Errno>(11);

std::atomic<bool> sIccApisLoaded = false;

// The mapping of the direct requests. It differs from getIccStateError, on purpose.
SUBSYS_Errno shortError(spi_cmd_err_code_e code) {
    if (code == SPI_CMD_SUCCESS) return SUBSYS_Errno::SUCCESS;
    return code == SPI_CMD_NOT_SUPPORT ? SUBSYS_Errno::NOT_SUPPORTED : SUBSYS_Errno::GENERIC_FAILURE;
}

// Payloads may be large, so they are only written out for a log that takes them.
bool logsDebug() {
    return __android_log_is_loggable(ANDROID_LOG_DEBUG, IccProxy::TAG, ANDROID_LOG_VERBOSE) != 0;
}

std::string hexText(const std::vector<uint8_t>& bytes) {
    return ByteArray(bytes.data(), bytes.size()).toString();
}

// What the listeners get. It takes its event's place in the backlog over, until the last of them is done with it.
template <typename Record>
class ReportedRecord : public SubsysInterfaceData<Record> {
public:
    ReportedRecord(const Record& record, sp<Object> place)
        : SubsysInterfaceData<Record>(record), mPlace(std::move(place)) {}

private:
    const sp<Object> mPlace;
};

template <typename Record>
void notifyRecord(const RegistrantList& listeners, const Record& record, const sp<Message>& message) {
    listeners.notify(new ReportedRecord<Record>(record, static_object_cast<IccEvent>(message->obj)->place));
}

}  // namespace

// The functions of the plugin. Symbol and type both come from the declaration in IccPluginApi.h.
struct IccProxy::PluginFunctions {
#define PLUGIN_FUNCTION(name)          \
    PluginFunction<decltype(::name)> { \
#name                          \
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

// ---- Life

IccProxy::IccProxy(int32_t instance, const sp<HandlerThread>& thread)
    : Handler(thread ? thread->getLooper() : Looper::myLooper()),
      mThread(thread),
      mExecutor(thread ? new ExecutorProxy(thread) : nullptr),
      mEvents(new Backlog(MAX_WAITING_EVENTS, TAG, "too many events wait, dropped")) {
    Log::d(TAG, "new IccProxy %d", instance);
}

IccProxy::~IccProxy() = default;

template <typename Task>
void IccProxy::post(Task task) {
    sp<Runnable> runnable =
        new Runnable([self = sp<IccProxy>(this), task = std::move(task)]() mutable { task(*self); });
    if (mExecutor) {
        mExecutor->execute(runnable);
    } else {
        Handler::post(runnable);
    }
}

// ---- Calling the plugin

bool IccProxy::loadIccApisPlugin() {
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
R IccProxy::callPlugin(PluginFunction<R(Args...)> function, std::type_identity_t<Args>... args) {
    // A second proxy finds the plugin loaded but has none of its own.
    if (mPlugin == nullptr) return R();
    return mPlugin->call<R, Args...>(function.symbol, std::move(args)...);
}

template <typename R, typename... Args>
R IccProxy::callOr(R fallback, PluginFunction<R(Args...)> function, std::type_identity_t<Args>... args) {
    return loadIccApisPlugin() ? callPlugin(function, std::move(args)...) : fallback;
}

template <typename... Args>
bool IccProxy::tryCall(PluginFunction<void(Args...)> function, std::type_identity_t<Args>... args) {
    if (!loadIccApisPlugin()) return false;
    callPlugin(function, std::move(args)...);
    return true;
}

bool IccProxy::iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void* resp, uint32_t respLen,
                              uint32_t timeoutMs) {
    return tryCall(PluginFunctions::sendReqSync, reqId, req, reqLen, resp, respLen, timeoutMs);
}

spi_cmd_err_code_e IccProxy::iccSetSatelliteAntState(int technology, int antenna, int state) {
    return callOr(SPI_CMD_FAILURE, PluginFunctions::setSatelliteAntState, technology, antenna, state);
}

spi_cmd_err_code_e IccProxy::iccSetTxSharingState(uint8_t enable, std::vector<uint16_t> band,
                                                  std::vector<uint16_t> param1, std::vector<uint8_t> param2) {
    return callOr(SPI_CMD_FAILURE, PluginFunctions::setTxSharingState, enable, std::move(band), std::move(param1),
                  std::move(param2));
}

spi_cmd_err_code_e IccProxy::iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return callOr(SPI_CMD_FAILURE, PluginFunctions::setAclState, enable, freq, cc, ant);
}

spi_cmd_err_code_e IccProxy::iccSetCoexAntState(uint8_t tech, uint8_t chain, uint8_t state, uint8_t config) {
    return callOr(SPI_CMD_FAILURE, PluginFunctions::setCoexAntState, tech, chain, state, config);
}

uint8_t IccProxy::iccGetIccHwId() {
    return callOr(uint8_t{255}, PluginFunctions::getHwId);
}

void IccProxy::iccStartUartLog() {
    if (!tryCall(PluginFunctions::startUartLog)) Log::d(TAG, "iccStartUartLog Invalid loadIccApisPlugin");
}

bool IccProxy::iccReloadConfig() {
    return tryCall(PluginFunctions::reloadConfig);
}

void IccProxy::iccApisInit(uint8_t version, uint32_t speed, uint8_t brindle) {
    post([=](IccProxy& proxy) { proxy.tryCall(PluginFunctions::init, version, speed, brindle); });
}

// ---- Registration

// One kind of event: who listens to it, and who tells them.
struct IccProxy::EventKind {
    IccEventType type;
    const char* registration;
    const sp<RegistrantList> IccProxy::*listeners;
    void (IccProxy::*handle)(const sp<Message>& message);
};

const IccProxy::EventKind* IccProxy::findKind(uint32_t type) {
    static constexpr std::array<EventKind, 5> KINDS = {{
        {ICC_EVENT_STATE_CHANGED, "registerIccStateInd", &IccProxy::mIccStateRegistrants,
         &IccProxy::handleIccStateChangedInd},
        {ICC_EVENT_CLAT_STATE, "registerIccClatInfoInd", &IccProxy::mIccClatInfoRegistrants,
         &IccProxy::handleClatStateInd},
        {ICC_EVENT_DEVICE_ERR, "registerIccDeviceErrInd", &IccProxy::mIccDeviceErrRegistrants,
         &IccProxy::handleDeviceErrInd},
        {ICC_EVENT_PERC_CHANGED, "registerIccPercChangeInd", &IccProxy::mIccPercChangeRegistrants,
         &IccProxy::handleIccPercChangedInd},
        {ICC_EVENT_COEX_ANT_CHANGED, "registerIccInfoChangedInd", &IccProxy::mIccInfoChangedRegistrants,
         &IccProxy::handleIccCoexAntChangedInd},
    }};
    const auto kind = std::find_if(KINDS.begin(), KINDS.end(), [&](const EventKind& k) { return k.type == type; });
    return kind == KINDS.end() ? nullptr : &*kind;
}

void IccProxy::registerIccStateInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                   const sp<Object>& obj) {
    registerInd(ICC_EVENT_STATE_CHANGED, new Registrant(handler, callback, obj));
}

void IccProxy::registerIccClatInfoInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                      const sp<Object>& obj) {
    registerInd(ICC_EVENT_CLAT_STATE, new Registrant(handler, callback, obj));
}

void IccProxy::registerIccDeviceErrInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                       const sp<Object>& obj) {
    registerInd(ICC_EVENT_DEVICE_ERR, new Registrant(handler, callback, obj));
}

void IccProxy::registerIccPercChangeInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                        const sp<Object>& obj) {
    registerInd(ICC_EVENT_PERC_CHANGED, new Registrant(handler, callback, obj));
}

void IccProxy::registerIccInfoChangedInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                         const sp<Object>& obj) {
    registerInd(ICC_EVENT_COEX_ANT_CHANGED, new Registrant(handler, callback, obj));
}

void IccProxy::registerInd(IccEventType type, const sp<Registrant>& registrant) {
    const EventKind& kind = *findKind(type);
    const size_t before = (this->*kind.listeners)->replace(registrant);
    Log::d(TAG, "%s cnt %d", kind.registration, static_cast<int>(before));
    post([type](IccProxy& proxy) { proxy.registerWithPlugin(type); });
}

void IccProxy::registerWithPlugin(IccEventType type) {
    if (!loadIccApisPlugin()) return;
    keepForPlugin();
    callPlugin(PluginFunctions::registerEvent, type, static_cast<void*>(this), &iccStateEventCallback);
}

sp<IccProxy>* IccProxy::sKeptForPlugin = nullptr;

// The plugin has this proxy's address from now on and calls back until the process is gone, static destructors
// included: one reference is never given back. Only the proxy that loaded the plugin gets here with one.
void IccProxy::keepForPlugin() {
    if (mPlugin != nullptr && sKeptForPlugin == nullptr) sKeptForPlugin = new sp<IccProxy>(this);
}

// ---- Events

void IccProxy::processIccStateEvent(IccEventType type, const void* data, int size) {
    auto place = mEvents->enter(1);
    if (!place) return;
    // Unsigned, since the plugin may choose any type.
    const auto what = static_cast<int32_t>(uint32_t{type} + EVENT_MESSAGE_BASE);
    obtainMessage(what, new IccEvent(type, data, size, std::move(place)))->sendToTarget();
}

void IccProxy::handleMessage(const sp<Message>& message) {
    if (!message) {
        Log::e(TAG, "can't handle null msg");
        return;
    }
    Log::d(TAG, "handleMessage %d", message->what);
    if (const EventKind* kind = findKind(static_cast<uint32_t>(message->what) - EVENT_MESSAGE_BASE)) {
        (this->*kind->handle)(message);
    } else {
        Log::e(TAG, "invalid msg what = %d", message->what);
    }
}

// The record at the start of an event's data. A shorter event is dropped, a choice for safety: no plugin should send
// one, and reading it would go out of bounds.
template <typename Record>
std::optional<Record> IccProxy::readEvent(const sp<Message>& message) {
    const auto event = mindroid::object_cast<IccEvent>(message->obj);
    if (!event) return std::nullopt;
    if (event->data.size() < sizeof(Record)) {
        Log::e(TAG, "event %d dropped: %zu bytes of data, %zu wanted", event->type, event->data.size(), sizeof(Record));
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, event->data.data(), sizeof(record));
    return record;
}

void IccProxy::handleIccStateChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccStateInfoType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccStateChangedInd iccState %d, bypass %d", static_cast<int>(record->iccState), record->bypass);
    notifyRecord(*mIccStateRegistrants, *record, message);
}

void IccProxy::handleClatStateInd(const sp<Message>& message) {
    const auto record = readEvent<IccAclStatusRspMsgType>(message);
    if (!record) return;
    Log::d(TAG, "handleClatStateInd freq %d ant %d ui %d gamma%d", record->freq, record->ant, record->ui,
           record->gamma);
    notifyRecord(*mIccClatInfoRegistrants, *record, message);
}

void IccProxy::handleDeviceErrInd(const sp<Message>& message) {
    const auto record = readEvent<IccDeviceErrType>(message);
    if (!record) return;
    Log::d(TAG, "handleDeviceErrInd dev num %d id %d err %d", record->devNum, record->id, record->err);
    notifyRecord(*mIccDeviceErrRegistrants, *record, message);
}

void IccProxy::handleIccPercChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccPercStateType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccPercChangedInd size %d", record->size);
    notifyRecord(*mIccPercChangeRegistrants, *record, message);
}

void IccProxy::handleIccCoexAntChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccCoexAntType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccCoexAntChangedInd tech %d chain %d state %d config %d", record->tech, record->chain,
           record->state, record->config);
    IccIndInfoType info = {};
    info.type = ICC_EVENT_COEX_ANT_CHANGED;
    std::memcpy(info.data, &*record, sizeof(*record));
    info.length = sizeof(*record);
    notifyRecord(*mIccInfoChangedRegistrants, info, message);
}

// ---- Settings

void IccProxy::setTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                 std::vector<uint8_t> param2) {
    post([=](IccProxy& proxy) {
        Log::d(TAG, "setTxSharingState ret: %d", proxy.iccSetTxSharingState(enable, band, param1, param2));
    });
}

void IccProxy::setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    post([=](IccProxy& proxy) { Log::d(TAG, "setAclState ret: %d", proxy.iccSetAclState(enable, freq, cc, ant)); });
}

void IccProxy::setScreenState(bool on) {
    post([on](IccProxy& proxy) { proxy.tryCall(PluginFunctions::setScreen, on); });
}

void IccProxy::sendIccEventInd(uint32_t event, const sp<ByteArray>& data) {
    post([event, bytes = data ? data->value() : std::vector<uint8_t>()](IccProxy& proxy) mutable {
        if (!proxy.loadIccApisPlugin()) return;
        if (logsDebug()) Log::d(TAG, "sendIccEventInd %d data %s", static_cast<int>(event), hexText(bytes).c_str());
        proxy.callPlugin(PluginFunctions::sendEventInd, event, bytes.data(), static_cast<uint16_t>(bytes.size()));
    });
}

// ---- Requests

void IccProxy::setIccWifiAntState(int32_t antenna, int32_t state, const sp<Message>& reply) {
    post([antenna, state, reply](IccProxy& proxy) {
        std::array<uint8_t, WIFI_ANT_REQUEST_SIZE> request = {static_cast<uint8_t>(antenna),
                                                              static_cast<uint8_t>(state)};
        uint8_t status = SPI_CMD_FAILURE;
        if (!proxy.iccSendReqSync(WIFI_ANT_COMMAND, request.data(), request.size(), &status, sizeof(status),
                                  WIFI_ANT_TIMEOUT_MS)) {
            SubsysComponent::sendResponse(reply, SUBSYS_Errno::GENERIC_FAILURE);
            return;
        }
        // Whatever the plugin answered, on purpose: the request goes out but counts as not supported.
        Log::e(TAG, "setWifiAntState failed, SPI_CMD_NOT_SUPPORT");
        SubsysComponent::sendResponse(reply, shortError(SPI_CMD_NOT_SUPPORT));
    });
}

void IccProxy::setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state, const sp<Message>& reply) {
    post([=](IccProxy& proxy) {
        const SUBSYS_Errno error = shortError(proxy.iccSetSatelliteAntState(technology, antenna, state));
        Log::d(TAG, "setIccSatelliteAntState ret: %d", static_cast<int>(error));
        SubsysComponent::sendResponse(reply, error);
    });
}

void IccProxy::getIccState(const sp<Message>& reply) {
    post([reply](IccProxy& proxy) {
        // The plugin gets a copy, so the answer is all zero, on purpose.
        const IccStateInfoType state = {};
        const auto code = proxy.callOr(SPI_CMD_FAILURE, PluginFunctions::getState, state);
        SubsysComponent::sendResponse(reply, shortError(code),
                                      sp<Object>(new SubsysInterfaceData<IccStateInfoType>(state)));
    });
}

void IccProxy::sendIccCmd(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs, const sp<Message>& reply) {
    if (reqId > MAX_SYNC_REQ_ID) {
        sendIccCmdExt(reqId, std::move(data), reply);
    } else {
        sendIccCmdSync(reqId, std::move(data), timeoutMs, reply);
    }
}

void IccProxy::sendIccCmdSync(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs, const sp<Message>& reply) {
    // Unsigned, so that a negative timeout is the longest.
    const uint32_t timeout = std::min(static_cast<uint32_t>(timeoutMs), MAX_SYNC_TIMEOUT_MS);
    post([=, data = std::move(data)](IccProxy& proxy) mutable {
        if (logsDebug()) Log::d(TAG, "sendIccCmd req id %d data %s", reqId, hexText(data).c_str());
        std::vector<uint8_t> response(SYNC_RESPONSE_SIZE);
        if (!proxy.iccSendReqSync(static_cast<uint32_t>(reqId), data.data(), static_cast<uint32_t>(data.size()),
                                  response.data(), SYNC_RESPONSE_SIZE, timeout)) {
            Log::e(TAG, "sendIccCmd err");
            SubsysComponent::sendResponse(reply, SUBSYS_Errno::GENERIC_FAILURE);
            return;
        }
        const sp<ByteArray> bytes = new ByteArray(std::move(response));
        if (logsDebug()) Log::d(TAG, "sendIccCmd resp %s", bytes->toString().c_str());
        SubsysComponent::sendResponse(reply, SUBSYS_Errno::SUCCESS, sp<Object>(bytes));
    });
}

void IccProxy::sendIccCmdExt(int32_t reqId, std::vector<uint8_t> data, const sp<Message>& reply) {
    post([reqId, reply, data = std::move(data)](IccProxy& proxy) {
        Log::d(TAG, "sendIccCmdExt req id %d", reqId);
        const ExtResult result = proxy.runExtCommand(reqId, data);
        Log::d(TAG, "sendIccCmdExt req id %d ret %d", reqId, static_cast<int>(result.error));
        SubsysComponent::sendResponse(reply, result.error, result.value);
    });
}

// ---- The service's own commands

struct IccProxy::ExtCommand {
    // A shorter payload is a generic failure.
    size_t minSize;
    ExtResult (IccProxy::*run)(const std::vector<uint8_t>& data);
};

IccProxy::ExtResult IccProxy::runExtCommand(int32_t reqId, const std::vector<uint8_t>& data) {
    static constexpr std::array<ExtCommand, 6> COMMANDS = {{
        {5, &IccProxy::extSetAclState},
        {0, &IccProxy::extReloadConfig},
        {3, &IccProxy::extSetSatelliteAntState},
        {4, &IccProxy::extSetCoexAntState},
        {0, &IccProxy::extGetHwId},
        {0, &IccProxy::extStartUartLog},
    }};
    const auto index = static_cast<uint32_t>(reqId) - FIRST_EXT_REQ_ID;
    if (index >= COMMANDS.size()) {
        Log::d(TAG, "sendIccCmdExt unknown reqId %d", reqId);
        return {SUBSYS_Errno::NOT_SUPPORTED};
    }
    const ExtCommand& command = COMMANDS[index];
    return data.size() < command.minSize ? ExtResult{SUBSYS_Errno::GENERIC_FAILURE} : (this->*command.run)(data);
}

IccProxy::ExtResult IccProxy::extSetAclState(const std::vector<uint8_t>& data) {
    const auto freq = static_cast<uint16_t>(data[1] | data[2] << 8);
    return {getIccStateError(iccSetAclState(data[0], freq, data[3], data[4]))};
}

IccProxy::ExtResult IccProxy::extReloadConfig(const std::vector<uint8_t>&) {
    return {iccReloadConfig() ? SUBSYS_Errno::SUCCESS : SUBSYS_Errno::GENERIC_FAILURE};
}

IccProxy::ExtResult IccProxy::extSetSatelliteAntState(const std::vector<uint8_t>& data) {
    return {getIccStateError(iccSetSatelliteAntState(data[0], data[1], data[2]))};
}

IccProxy::ExtResult IccProxy::extSetCoexAntState(const std::vector<uint8_t>& data) {
    return {getIccStateError(iccSetCoexAntState(data[0], data[1], data[2], data[3]))};
}

IccProxy::ExtResult IccProxy::extGetHwId(const std::vector<uint8_t>&) {
    const uint8_t id = iccGetIccHwId();
    return {SUBSYS_Errno::SUCCESS, new ByteArray(&id, sizeof(id))};
}

IccProxy::ExtResult IccProxy::extStartUartLog(const std::vector<uint8_t>&) {
    iccStartUartLog();
    return {SUBSYS_Errno::SUCCESS};
}

SUBSYS_Errno IccProxy::getIccStateError(spi_cmd_err_code_e code) {
    switch (code) {
        case SPI_CMD_FAILURE:
            return SUBSYS_Errno::GENERIC_FAILURE;
        case SPI_CMD_FAILURE_4:
            return INTERNAL_ERROR_11;
        case SPI_CMD_NOT_SUPPORT:
            return SUBSYS_Errno::NOT_SUPPORTED;
        default:
            // All other failures count as success, on purpose.
            return SUBSYS_Errno::SUCCESS;
    }
}

}  // namespace hal
