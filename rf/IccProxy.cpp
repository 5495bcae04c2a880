#include "rf/IccProxy.h"

#include "component/RequestTrace.h"
#include "rf/IccEvent.h"

#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <tuple>
#include <utility>

using mindroid::ByteArray;
using mindroid::Handler;
using mindroid::HandlerThread;
using mindroid::Log;
using mindroid::Looper;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Runnable;
using mindroid::sp;

extern "C" void iccStateEventCallback(IccEventType type, void* context, void* data, int size) {
    if (context == nullptr) {
        Log::e(hal::IccProxy::TAG, "iccStateEventCallback error proxy %llx, event %d", 0ULL, static_cast<int>(type));
        return;
    }
    static_cast<hal::IccProxy*>(context)->processIccStateEvent(type, data, size);
}

namespace hal {

namespace {

constexpr int32_t MAX_SYNC_REQ_ID = 254;

}  // namespace

// ---- Life

IccProxy::IccProxy(int32_t instance, const sp<HandlerThread>& thread)
    : Handler(thread ? thread->getLooper() : Looper::myLooper()),
      mThread(thread),
      mExecutor(thread ? new ExecutorProxy(thread) : nullptr),
      mCommands(mPlugin) {
    Log::d(TAG, "new IccProxy %d", instance);
}

IccProxy::~IccProxy() = default;

template <typename Task>
void IccProxy::post(Task task) {
    const sp<Runnable> runnable =
        new Runnable([self = sp<IccProxy>(this), request = RequestTrace::currentCookie(), task = std::move(task)] {
            const RequestStage stage("plugin", request);
            task(*self);
        });
    if (mExecutor) {
        mExecutor->execute(runnable);
    } else {
        obtainMessage(runnable)->sendToTarget();
    }
}

template <typename... Params, typename... Args>
void IccProxy::postCommand(void (IccCommands::*command)(Params...), Args... args) {
    post([command, args = std::tuple(std::move(args)...)](IccProxy& proxy) {
        std::apply([&](const auto&... values) { (proxy.mCommands.*command)(values...); }, args);
    });
}

void IccProxy::iccApisInit(uint8_t version, uint32_t speed, uint8_t brindle) {
    post([=](IccProxy& proxy) { proxy.mPlugin.iccApisInit(version, speed, brindle); });
}

// ---- Registration

void IccProxy::registerIccStateInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                   const sp<Object>& obj) {
    registerInd(ICC_EVENT_STATE_CHANGED, handler, callback, obj);
}

void IccProxy::registerIccClatInfoInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                      const sp<Object>& obj) {
    registerInd(ICC_EVENT_CLAT_STATE, handler, callback, obj);
}

void IccProxy::registerIccDeviceErrInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                       const sp<Object>& obj) {
    registerInd(ICC_EVENT_DEVICE_ERR, handler, callback, obj);
}

void IccProxy::registerIccPercChangeInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                        const sp<Object>& obj) {
    registerInd(ICC_EVENT_PERC_CHANGED, handler, callback, obj);
}

void IccProxy::registerIccInfoChangedInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                         const sp<Object>& obj) {
    registerInd(ICC_EVENT_COEX_ANT_CHANGED, handler, callback, obj);
}

void IccProxy::registerInd(IccEventType type, const sp<Handler>& handler, const sp<MessageCallback>& callback,
                           const sp<Object>& obj) {
    mEvents.add(type, handler, callback, obj);
    post([type](IccProxy& proxy) { proxy.registerWithPlugin(type); });
}

void IccProxy::registerWithPlugin(IccEventType type) {
    if (!mPlugin.loadIccApisPlugin()) return;
    // The plugin calls back until the process is gone, static destructors included: the proxy must not end before.
    if (mPlugin.isReachable()) mKeptForPlugin = this;
    mPlugin.registerIccEvent(type, this, &iccStateEventCallback);
}

// ---- Events

void IccProxy::processIccStateEvent(IccEventType type, const void* data, int size) {
    // Unsigned, since the plugin may choose any type.
    const auto what = static_cast<int32_t>(uint32_t{type} + IccEvents::MESSAGE_BASE);
    atrace_instant(TRACE_TAG, TraceName("ICC event", " ", type).c_str());
    obtainMessage(what, new IccEvent(type, data, size))->sendToTarget();
}

void IccProxy::handleMessage(const sp<Message>& message) {
    if (!message) {
        Log::e(TAG, "can't handle null msg");
        return;
    }
    mEvents.handleMessage(message);
}

// ---- Commands

void IccProxy::setTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                                 std::vector<uint8_t> param2) {
    postCommand(&IccCommands::setTxSharingState, enable, std::move(band), std::move(param1), std::move(param2));
}

void IccProxy::setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    postCommand(&IccCommands::setAclState, enable, freq, cc, ant);
}

void IccProxy::setScreenState(bool on) {
    postCommand(&IccCommands::setScreenState, on);
}

void IccProxy::sendIccEventInd(uint32_t event, const sp<ByteArray>& data) {
    postCommand(&IccCommands::sendIccEventInd, event, data);
}

void IccProxy::setIccWifiAntState(int32_t antenna, int32_t state, const sp<Message>& reply) {
    postCommand(&IccCommands::setIccWifiAntState, antenna, state, reply);
}

void IccProxy::setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state, const sp<Message>& reply) {
    postCommand(&IccCommands::setIccSatelliteAntState, technology, antenna, state, reply);
}

void IccProxy::getIccState(const sp<Message>& reply) {
    postCommand(&IccCommands::getIccState, reply);
}

void IccProxy::sendIccCmd(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs, const sp<Message>& reply) {
    if (reqId > MAX_SYNC_REQ_ID) {
        postCommand(&IccCommands::sendIccCmdExt, reqId, std::move(data), reply);
    } else {
        postCommand(&IccCommands::sendIccCmdSync, reqId, std::move(data), timeoutMs, reply);
    }
}

}  // namespace hal
