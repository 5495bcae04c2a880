#include "rf/RfSubsysService.h"

#include "component/RequestBridge.h"
#include "component/SubsysInterfaceData.h"
#include "rf/IccConversions.h"
#include "rf/IccPluginApi.h"
#include "rf/LcdInfo.h"
#include "rf/RfSubsysComponent.h"
#include "service/channel/SubsysServiceIndication.h"
#include "service/channel/SubsysServiceResponse.h"

#include <mindroid/Boxes.h>
#include <mindroid/Log.h>
#include <mindroid/Runnable.h>

#include <functional>
#include <utility>

using ::hal::RfSubsysComponent;
using ::mindroid::Byte;
using ::mindroid::ByteArray;
using ::mindroid::Log;
using ::mindroid::Message;
using ::mindroid::MessageCallback;
using ::mindroid::sp;
using ::ndk::ScopedAStatus;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

namespace {

constexpr int32_t MSG_CONNECT = 0;
constexpr int64_t CONNECT_DELAY_MS = 200;
constexpr int32_t META_CMD_TIMEOUT_MS = 4000;

sp<RfSubsysComponent> findComponent(const char* request) {
    auto component = ::hal::getRfSubsysComponent();
    if (!component) Log::d(RfSubsysService::TAG, "%s rfSubsysComponent is null!", request);
    return component;
}

// ---- What listens to the component's events

void onIccState(SubsysServiceIndication& indication, const IccStateInfoType& record) {
    const IccStateInfo info = fromStateEvent(record);
    Log::d(RfSubsysService::TAG, "sendiccStateChanged %d %d", static_cast<int>(record.iccState), record.bypass);
    indication.sendiccStateChanged(info);
}

void onIccPerception(SubsysServiceIndication& indication, const IccPercStateType& record) {
    const IccPerceptionInfo info = fromPerception(record);
    Log::d(RfSubsysService::TAG, "sendiccPercChanged to sys %d", static_cast<int>(record.size));
    indication.notifyIccPercStateChangedInd(info);
}

void onIccInformation(SubsysServiceIndication& indication, const IccIndInfoType& record) {
    const IccIndInfo info = fromInformation(record);
    Log::d(RfSubsysService::TAG, "notifyIccInfoChanged id %d, dataLen %d", info.id, static_cast<int>(record.length));
    indication.notifyIccInfoChanged(info);
}

template <typename Record>
sp<MessageCallback> listener(const char* name, void (*forward)(SubsysServiceIndication&, const Record&)) {
    return new MessageCallback([name, forward](const sp<Message>& message) {
        const auto indication = SubsysServiceIndication::getInstance();
        if (indication && message->obj) {
            forward(*indication, ::hal::carriedRecord<Record>(*message->obj));
        } else {
            Log::e(RfSubsysService::TAG, "%s fail! null ind or null obj", name);
        }
    });
}

// ---- What listens to the component's replies

void answerIccState(int32_t serial, const Message& reply) {
    // A failed query has no record; its client gets an empty one.
    const IccStateInfoType record = reply.obj ? ::hal::carriedRecord<IccStateInfoType>(*reply.obj) : IccStateInfoType{};
    Log::d(RfSubsysService::TAG, "getIccState state = %d, bypass = %d, modeNum=%d!", static_cast<int>(record.iccState),
           record.bypass, record.modeNum);
    const IccStateInfo info = fromStateAnswer(record);
    if (const auto response = SubsysServiceResponse::getInstance()) {
        (void)response->getIccStateResponse(serial, ::hal::replyError(reply), info);
    }
}

void answerIccCmd(int32_t serial, const Message& reply) {
    const SUBSYS_Errno error = ::hal::replyError(reply);
    Log::d(RfSubsysService::TAG, "sendIccCmd respCb errorNo: %d", static_cast<int>(error));
    const auto* bytes = ::hal::replyValue<ByteArray>(reply);
    const uint8_t* data = bytes != nullptr ? bytes->data() : nullptr;
    const size_t length = bytes != nullptr ? bytes->size() : 0;
    if (const auto response = SubsysServiceResponse::getInstance()) {
        // Deliberate: always request id 0. Clients rely on the serial.
        (void)response->sendIccCmdResponse(serial, error, 0, data, static_cast<uint32_t>(length));
    }
}

// What the reply adds to the id and the token of the request. The type is that of the request.
void fillMetaAnswer(IccMetaRespInfo& info, int32_t type, const Message& reply) {
    if (reply.arg2 != 0) return;
    info.type = static_cast<int8_t>(type);
    info.result = true;
    const auto* bytes = ::hal::replyValue<ByteArray>(reply);
    if (bytes == nullptr) return;
    if (bytes->size() == 0) Log::e(RfSubsysService::TAG, "sendIccMetaCmd respData is null");
    info.data = bytes->value();
}

void answerIccMetaCmd(IccMetaRespInfo info, int32_t type, const std::shared_ptr<ISubsysIccMetaCallback>& callback,
                      const Message& reply) {
    Log::d(RfSubsysService::TAG, "sendIccMetaCmd respCb errorNo: %d", reply.arg2);
    fillMetaAnswer(info, type, reply);
    if (!callback) {
        Log::e(RfSubsysService::TAG, "sendIccMetaCmd callback is null");
        return;
    }
    const ScopedAStatus status = callback->onIccMetaResp(info);
    if (!status.isOk()) {
        Log::e(RfSubsysService::TAG, "sendIccMetaCmd call onIccMetaResp error: %s", status.getDescription().c_str());
    }
}

}  // namespace

void RfSubsysService::init() {
    Log::d(TAG, "init done");
}

void RfSubsysService::postInit() {
    Log::d(TAG, "postInit done");
}

// ---- Events

void RfSubsysService::setSubsysState(bool connected) {
    if (connected) sendEmptyMessageDelayed(MSG_CONNECT, CONNECT_DELAY_MS);
}

void RfSubsysService::handleMessage(const sp<Message>& message) {
    if (message->what == MSG_CONNECT) onSubsysConnected();
}

void RfSubsysService::onSubsysConnected() {
    Log::d(TAG, "onSubsysConnected enter");
    const auto component = ::hal::getRfSubsysComponent();
    if (!component) {
        Log::e(TAG, "onSubsysConnected get component failed");
        return;
    }
    if (!component->isIccSupported()) {
        Log::d(TAG, "ICC unsupported");
        return;
    }
    component->registerIccStateInd(this, listener("sendiccStateChanged", onIccState), nullptr);
    component->registerIccPercChangeInd(this, listener("sendiccPercChanged", onIccPerception), nullptr);
    component->registerIccInfoChangedInd(this, listener("notifyIccInfoChanged", onIccInformation), nullptr);
}

void RfSubsysService::sendSwtpStatusChanged(uint8_t status) {
    const auto indication = SubsysServiceIndication::getInstance();
    if (!indication) return;
    Log::d(TAG, "sendSwtpStatusChanged");
    indication->sendSwtpStatusChanged(status);
}

// ---- Bridged requests

template <typename Operation, typename Response, typename... Args>
ScopedAStatus RfSubsysService::requestVoid(const char* name, int32_t serial, Operation operation, Response response,
                                           Args... args) {
    const auto component = findComponent(name);
    if (!component) return ScopedAStatus::ok();
    return ::hal::callComponentRspVoid(
        static_cast<uint32_t>(serial), this,
        [&](const sp<Message>& reply) { (component.get()->*operation)(args..., reply); },
        std::bind_front(response, SubsysServiceResponse::getInstance()));
}

ScopedAStatus RfSubsysService::setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk) {
    return requestVoid("setMipiFreqClk", serial, &RfSubsysComponent::setMipiFreqClk,
                       &SubsysServiceResponse::setMipiFreqClkResponse, id, static_cast<uint64_t>(freqClk));
}

ScopedAStatus RfSubsysService::setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk) {
    return requestVoid("setOscFreqClk", serial, &RfSubsysComponent::setOscFreqClk,
                       &SubsysServiceResponse::setOscFreqClkResponse, id, freqClk);
}

ScopedAStatus RfSubsysService::setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna,
                                                 int32_t state) {
    return requestVoid("setIccTuningState", serial, &RfSubsysComponent::setIccTuningState,
                       &SubsysServiceResponse::setIccTuningStateResponse, technology, band, antenna, state);
}

ScopedAStatus RfSubsysService::setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state) {
    return requestVoid("setIccWifiAntState", serial, &RfSubsysComponent::setIccWifiAntState,
                       &SubsysServiceResponse::setIccWifiAntStateResponse, antenna, state);
}

ScopedAStatus RfSubsysService::setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna,
                                                       int32_t state) {
    return requestVoid("setIccSatelliteAntState", serial, &RfSubsysComponent::setIccSatelliteAntState,
                       &SubsysServiceResponse::setIccSatelliteAntStateResponse, technology, antenna, state);
}

ScopedAStatus RfSubsysService::getSwtpStatus(int32_t serial) {
    const auto component = findComponent("getSwtpStatus");
    if (!component) return ScopedAStatus::ok();
    const auto call = [&](const sp<Message>& reply) { component->getSwtpStatus(reply); };
    auto response =
        std::bind_front(&SubsysServiceResponse::getSwtpStatusResponse, SubsysServiceResponse::getInstance());
    return ::hal::callComponentRspValue<decltype(call), decltype(response), Byte, uint8_t>(
        static_cast<uint32_t>(serial), this, call, std::move(response));
}

ScopedAStatus RfSubsysService::getNvramData(int32_t serial, int32_t id, int32_t size) {
    const auto component = findComponent("getNvramData");
    if (!component) return ScopedAStatus::ok();
    return ::hal::callComponentRspByteArray(
        static_cast<uint32_t>(serial), this,
        [&](const sp<Message>& reply) { component->getNvramData(id, size, reply); },
        std::bind_front(&SubsysServiceResponse::getNvramDataResponse, SubsysServiceResponse::getInstance()));
}

// ---- The other requests

ScopedAStatus RfSubsysService::getLcdInfo(int32_t serial, int32_t /*type*/) {
    const auto text = ::hal::readLcdInfo(TAG);
    if (const auto response = SubsysServiceResponse::getInstance()) {
        // Deliberate: at error level, although nothing failed. Readers of the log look for it there.
        Log::e(TAG, "lcd_buf getLcdInfoResponse");
        (void)response->getLcdInfoResponse(serial, text ? SUBSYS_Errno::SUCCESS : SUBSYS_Errno::GENERIC_FAILURE,
                                           text.value_or(""));
    }
    return ScopedAStatus::ok();
}

ScopedAStatus RfSubsysService::getIccState(int32_t serial) {
    if (const auto component = findComponent("getIccState")) {
        component->getIccState(
            ::hal::obtainReplyMessage(this, [serial](const Message& reply) { answerIccState(serial, reply); }));
    }
    return ScopedAStatus::ok();
}

ScopedAStatus RfSubsysService::sendIccCmd(int32_t serial, const IccReqInfo& info) {
    if (const auto component = findComponent("sendIccCmd")) {
        component->sendIccCmd(
            info.reqId, info.data, info.timeout,
            ::hal::obtainReplyMessage(this, [serial](const Message& reply) { answerIccCmd(serial, reply); }));
    }
    return ScopedAStatus::ok();
}

ScopedAStatus RfSubsysService::sendIccMetaCmd(const IccMetaReqInfo& info,
                                              const std::shared_ptr<ISubsysIccMetaCallback>& callback) {
    // Deliberate: at error level, although nothing failed. Readers of the log look for it there.
    Log::e(TAG, "sendIccMetaCmd enter");
    const auto component = findComponent("sendIccMetaCmd");
    if (!component) return ScopedAStatus::ok();
    Log::d(TAG, "sendIccMetaCmd id %d, token %d, type %d, reqId %d, size %d", info.id, info.token, info.type,
           info.reqId, static_cast<int>(info.data.size()));
    IccMetaRespInfo answer;
    answer.id = info.id;
    answer.token = info.token;
    component->sendIccCmd(info.reqId, info.data, META_CMD_TIMEOUT_MS,
                          ::hal::obtainReplyMessage(this, [answer, type = info.type, callback](const Message& reply) {
                              answerIccMetaCmd(answer, type, callback, reply);
                          }));
    return ScopedAStatus::ok();
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
