#include "rf/RfSubsysComponent.h"

#include "component/ComponentManager.h"
#include "component/RequestBridge.h"
#include "component/SubsysInterfaceData.h"
#include "rf/IccProxy.h"
#include "rf/VsComponent.h"
#include "rf/VsRecords.h"

#include <cutils/properties.h>
#include <mindroid/Boxes.h>
#include <mindroid/Log.h>
#include <mindroid/SystemClock.h>

#include <cstddef>

using mindroid::ByteArray;
using mindroid::Handler;
using mindroid::Integer;
using mindroid::Log;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::sp;
using mindroid::SystemClock;

namespace hal {

namespace {

constexpr int64_t RF_ICC_INFO_RETRY_MS = 50;
constexpr int32_t RF_ICC_INFO_MAX_TRIES = 5;
constexpr uint32_t ICC_BUS_SPEED_HZ = 4000000;
constexpr int32_t NOT_SUPPORTED = 1;

// Deliberate: one-time steps are taken once for the process, not for the component. The plugin relies on it.
// Thread: looper.
bool sVsReady = false;
bool sRfIccInfoDone = false;
int32_t sRfIccInfoTries = 0;

}  // namespace

sp<RfSubsysComponent> getRfSubsysComponent() {
    return getComponent<RfSubsysComponent>(RfSubsysComponent::TYPE);
}

RfSubsysComponent::RfSubsysComponent() : SubsysComponent(TYPE) {
    Log::d(TAG, "create RfSubsysComponent");
}

RfSubsysComponent::~RfSubsysComponent() = default;

bool RfSubsysComponent::isIccSupported() {
    static const bool sIccSupported = property_get_bool("persist.vendor.nuvex.icc.module.enable", false) != 0;
    return sIccSupported;
}

void RfSubsysComponent::init(int32_t phase) {
    Log::d(TAG, "init RfSubsysComponent %d", phase);
    if (phase != 0) return;
    SubsysComponent::init(phase);

    if (const auto vs = getComponent<VsComponent>(VsComponent::TYPE, mInstanceId)) {
        vs->mStateRegistrants->add(new Registrant(this, MSG_VS_COMPONENT_STATE));
    } else {
        Log::e(TAG, "get VsComponent(%d) failed", mInstanceId);
    }
    if (isIccSupported()) {
        mIccProxy = createDedicateProxy<IccProxy>(0);
    } else {
        Log::d(TAG, "ICC unsupported!");
    }
}

void RfSubsysComponent::handleMessage(const sp<Message>& message) {
    if (!message) {
        Log::e(TAG, "can't handle null msg");
        return;
    }
    Log::d(TAG, "handleMessage msg is %d", message->what);
    if (message->what == MSG_VS_COMPONENT_STATE) {
        const auto* state = static_cast<const Integer*>(message->obj.get());
        if (state != nullptr && state->value() == 1) onVsComponentReady();
    } else if (message->what == MSG_GET_RF_ICC_INFO) {
        getRfIccInfo();
    } else {
        SubsysComponent::handleMessage(message);
    }
}

// ---- The VsComponent

void RfSubsysComponent::onVsComponentReady() {
    Log::d(TAG, "onVsComponentReady instance %d", mInstanceId);
    if (sVsReady || mInstanceId != 0) return;
    const auto vs = getComponent<VsComponent>(VsComponent::TYPE, 0);
    if (!vs) {
        Log::e(TAG, "get VsComponent(%d) failed", mInstanceId);
        return;
    }
    if (isIccSupported()) {
        sendEmptyMessageDelayed(MSG_GET_RF_ICC_INFO, RF_ICC_INFO_RETRY_MS);
        vs->registerClatStateInd(this, onNotification(&RfSubsysComponent::onClatState), nullptr);
        vs->registerTxSharingInd(this, onNotification(&RfSubsysComponent::onTxSharingState), nullptr);
        vs->mScreenStateRegistrants->add(
            new Registrant(this, onNotification(&RfSubsysComponent::onScreenState), nullptr));
        vs->registerIccEventInd(this, onNotification(&RfSubsysComponent::onIccEvent), nullptr);
    }
    sVsReady = true;
}

sp<MessageCallback> RfSubsysComponent::onNotification(void (RfSubsysComponent::*operation)(const Object&)) {
    return new MessageCallback([self = sp<RfSubsysComponent>(this), operation](const sp<Message>& message) {
        if (message && message->obj) (self.get()->*operation)(*message->obj);
    });
}

void RfSubsysComponent::onClatState(const Object& carrier) {
    const auto& state = carriedRecord<VsClatState>(carrier);
    Log::d(TAG, "Set CLAT enable %d freq %d cc %d ant %d", state.enable, state.freq, state.cc, state.ant);
    if (mIccProxy) mIccProxy->setAclState(state.enable, state.freq, state.cc, state.ant);
}

void RfSubsysComponent::onTxSharingState(const Object& carrier) {
    const auto& state = carriedRecord<VsTxSharingState>(carrier);
    Log::d(TAG, "Set Tx Sharing enable %d combo {%dA, %d, %d} ++ {%dA, %d, %d}", state.enable, state.band[0],
           state.param1[0], state.param2[0], state.band[1], state.param1[1], state.param2[1]);
    if (!mIccProxy) return;
    mIccProxy->setTxSharingState(state.enable, {state.band[0], state.band[1]}, {state.param1[0], state.param1[1]},
                                 {state.param2[0], state.param2[1]});
}

void RfSubsysComponent::onScreenState(const Object& carrier) {
    const int32_t state = static_cast<const Integer&>(carrier).value();
    Log::d(TAG, "screen state changed %d", state);
    if (mIccProxy) mIccProxy->setScreenState(state != 0);
}

void RfSubsysComponent::onIccEvent(const Object& carrier) {
    if (!mIccProxy) return;
    // The capacity is the sender's secret: the bytes are found by their position, and the length says how many.
    using AnyIccEvent = VsIccEvent<1>;
    const auto& event = carriedRecord<AnyIccEvent>(carrier);
    const auto* data = reinterpret_cast<const uint8_t*>(&event) + offsetof(AnyIccEvent, data);
    mIccProxy->sendIccEventInd(event.event, new ByteArray(data, event.length));
}

// ---- The RF ICC information

void RfSubsysComponent::getRfIccInfo() {
    if (sRfIccInfoDone) return;
    const int32_t tries = sRfIccInfoTries++;
    if (tries >= RF_ICC_INFO_MAX_TRIES) {
        Log::d(TAG, "getRfIccInfo stop try, init default");
        iccApisInit(0, 0);
        sRfIccInfoDone = true;
        return;
    }
    Log::d(TAG, "getRfIccInfo try %d", tries + 1);
    const auto vs = getComponent<VsComponent>(VsComponent::TYPE, mInstanceId);
    if (!vs) {
        // Deliberate: no further try. Without a VsComponent the plugin stays uninitialised, and plugins know it so.
        Log::e(TAG, "getRfIccInfo get VsComponent(%d) failed", mInstanceId);
        return;
    }
    vs->getRfIccInfo(obtainReplyMessage(
        this, [self = sp<RfSubsysComponent>(this)](const Message& reply) { self->onRfIccInfo(reply); }));
    sendEmptyMessageDelayed(MSG_GET_RF_ICC_INFO, RF_ICC_INFO_RETRY_MS);
}

void RfSubsysComponent::onRfIccInfo(const Message& reply) {
    // Deliberate: at error level, although nothing failed. Readers of the log look for it there.
    Log::e(TAG, "getRfIccInfo cb");
    if (sRfIccInfoDone) {
        Log::e(TAG, "getRfIccInfo already init, exit");
        return;
    }
    if (const auto* carrier = replyValue<Object>(reply)) {
        const auto& info = carriedRecord<VsRfIccInfo>(*carrier);
        Log::d(TAG, "getRfIccInfo version %d blacklist 0x%04x brindle %d ", info.version, info.blacklist, info.brindle);
        iccApisInit(info.version, info.brindle);
    } else {
        Log::e(TAG, "getRfIccInfo err %d", reply.arg2);
        iccApisInit(0, 0);
    }
    sRfIccInfoDone = true;
}

void RfSubsysComponent::iccApisInit(uint8_t version, uint8_t brindle) {
    Log::d(TAG, "iccApisInit ver.%d brindle %d", version, brindle);
    if (mIccProxy) {
        mIccProxy->iccApisInit(version, ICC_BUS_SPEED_HZ, brindle);
    } else {
        Log::e(TAG, "iccApisInit failed! proxy missing");
    }
    sendMessageAtTime(obtainMessage(MSG_PROXY_STATE_CHANGED, new Integer(1)), SystemClock::uptimeMillis());
}

// ---- Requests that this component does not implement

void RfSubsysComponent::getSwtpStatus(const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::setMipiFreqClk(int32_t, uint64_t, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::setOscFreqClk(int32_t, int32_t, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::getMipiClk(int32_t, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::getOscClk(int32_t, std::vector<uint32_t>*, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::getNvramData(int32_t, int32_t, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

void RfSubsysComponent::setIccTuningState(int32_t, int32_t, int32_t, int32_t, const sp<Message>& reply) {
    sendErrorResponse(reply, NOT_SUPPORTED);
}

// ---- Requests for the ICC proxy

template <typename Operation, typename... Args>
void RfSubsysComponent::request(const sp<Message>& reply, Operation operation, Args&&... args) {
    if (!mIccProxy) {
        Log::e(TAG, "IccProxy is null");
        sendResponse(reply, SUBSYS_Errno::NOT_SUPPORTED);
        return;
    }
    (mIccProxy.get()->*operation)(std::forward<Args>(args)..., reply);
}

void RfSubsysComponent::setIccWifiAntState(int32_t antenna, int32_t state, const sp<Message>& reply) {
    request(reply, &IccProxy::setIccWifiAntState, antenna, state);
}

void RfSubsysComponent::setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state,
                                                const sp<Message>& reply) {
    request(reply, &IccProxy::setIccSatelliteAntState, technology, antenna, state);
}

void RfSubsysComponent::getIccState(const sp<Message>& reply) {
    request(reply, &IccProxy::getIccState);
}

void RfSubsysComponent::sendIccCmd(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs,
                                   const sp<Message>& reply) {
    request(reply, &IccProxy::sendIccCmd, reqId, std::move(data), timeoutMs);
}

// ---- Listeners of ICC events

void RfSubsysComponent::registerIccStateInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                            const sp<Object>& obj) {
    if (mIccProxy) mIccProxy->registerIccStateInd(handler, callback, obj);
}

void RfSubsysComponent::registerIccClatInfoInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                               const sp<Object>& obj) {
    if (mIccProxy) mIccProxy->registerIccClatInfoInd(handler, callback, obj);
}

void RfSubsysComponent::registerIccDeviceErrInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                                const sp<Object>& obj) {
    if (mIccProxy) mIccProxy->registerIccDeviceErrInd(handler, callback, obj);
}

void RfSubsysComponent::registerIccPercChangeInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                                 const sp<Object>& obj) {
    if (mIccProxy) mIccProxy->registerIccPercChangeInd(handler, callback, obj);
}

void RfSubsysComponent::registerIccInfoChangedInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                                  const sp<Object>& obj) {
    if (mIccProxy) mIccProxy->registerIccInfoChangedInd(handler, callback, obj);
}

}  // namespace hal
