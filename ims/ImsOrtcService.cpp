#include "ims/ImsOrtcService.h"

#include "component/RequestBridge.h"
#include "component/RequestTrace.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"
#include "ims/ImsOrtcConversions.h"
#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"

#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <functional>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {
namespace {

using ::hal::ImsOrtcComponent;
using ::mindroid::Handler;
using ::mindroid::Message;
using ::mindroid::MessageCallback;
using ::mindroid::Object;
using ::mindroid::sp;

template <typename Record>
using ComponentRequest = void (ImsOrtcComponent::*)(const Record&, const sp<Message>&);
using Response = ::ndk::ScopedAStatus (ImsOrtcServiceResponse::*)(int32_t, SUBSYS_Errno);

// The four requests that the component answers by an error code alone.
template <typename Info, typename Record>
::ndk::ScopedAStatus bridge(const sp<Handler>& handler, int32_t serial, const Info& info, Record (*pack)(const Info&),
                            ComponentRequest<Record> request, Response response, const char* whenMissing) {
    const auto component = ::hal::getImsOrtcComponent();
    if (component == nullptr) {
        // Deliberate: dropped, not failed. The client gets no response, and does not wait for one without a component.
        ::mindroid::Log::d(ImsOrtcService::TAG, "%s", whenMissing);
        return ::ndk::ScopedAStatus::ok();
    }
    return ::hal::callComponentRspVoid(static_cast<uint32_t>(serial), handler,
                                       std::bind_front(request, component, pack(info)),
                                       std::bind_front(response, ImsOrtcServiceResponse::getInstance()));
}

using Subscribe = void (ImsOrtcComponent::*)(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&);

struct Subscription {
    Subscribe subscribe;
    sp<MessageCallback> converter;
};

// Turns an event of the component into an indication.
template <typename Record, typename Info>
sp<MessageCallback> converter(void (*unpack)(const Record&, Info&),
                              void (ImsOrtcServiceIndication::*indicate)(const Info&)) {
    return new MessageCallback([unpack, indicate](const sp<Message>& event) {
        const auto indication = ImsOrtcServiceIndication::getInstance();
        if (indication == nullptr || event->obj == nullptr) return;
        atrace_instant(::hal::TRACE_TAG, "IMS event");
        Info info;
        unpack(::hal::carriedRecord<Record>(*event->obj), info);
        (indication.get()->*indicate)(info);
    });
}

void answerSignalMsg(int32_t serial, const Message& reply) {
    ImsRtpRedunSignalMsgRspInfo rspInfo;
    if (reply.arg2 == 0 && reply.obj != nullptr) {
        const auto& record = ::hal::carriedRecord<::hal::ImsRtpRedunSignalMsgRspInfoType>(*reply.obj);
        ::hal::unpackImsRtpRedunSignalMsgRspInfo(record, rspInfo);
    }
    const auto response = ImsOrtcServiceResponse::getInstance();
    if (response == nullptr) return;
    (void)response->sendImsRtpRedunSignalMsgResponse(serial, ::hal::replyError(reply), rspInfo);
}

}  // namespace

ImsOrtcService::ImsOrtcService() {
    ::mindroid::Log::d(TAG, "start");
}

void ImsOrtcService::init() {
    using Component = ImsOrtcComponent;
    using Indication = ImsOrtcServiceIndication;
    // Deliberate: not the public-key events. Clients have no callback for them.
    const Subscription subscriptions[] = {
        {&Component::registerLocalPubIpAddrChangedInd,
         converter(::hal::unpackImsRtpPubIpAddrInfo, &Indication::LocalPubIpAddrChanged)},
        {&Component::registerRecvImsRtpDataInd, converter(::hal::unpackImsRtpDataInfo, &Indication::recvImsRtpData)},
        {&Component::registerNotifyOrtcStatusInd, converter(::hal::unpackOrtcStatus, &Indication::notifyOrtcStatus)},
        {&Component::registerNotifyConnectInfoInd,
         converter(::hal::unpackOrtcConnectInfo, &Indication::notifyConnectInfo)},
        {&Component::registerRecvImsRtpRedunSignalMsgInd,
         converter(::hal::unpackImsRtpRedunSignalMsg, &Indication::recvImsRtpRedunSignalMsgInd)},
        {&Component::registerNotifyImsRtpRedunDataLinkStateInd,
         converter(::hal::unpackImsRtpRedunDataLinkStateInfo, &Indication::notifyImsRtpRedunDataLinkStateInd)},
    };
    if (const auto component = ::hal::getImsOrtcComponent(); component != nullptr) {
        for (const auto& [subscribe, callback] : subscriptions) (component.get()->*subscribe)(this, callback, nullptr);
    }
    ::mindroid::Log::d(TAG, "init done");
}

::ndk::ScopedAStatus ImsOrtcService::setCallInfo(int32_t serial, const CallInfo& info) {
    return bridge(this, serial, info, ::hal::packCallInfo, &ImsOrtcComponent::setCallInfo,
                  &ImsOrtcServiceResponse::setCallInfoResponse, "update call component is null!");
}

::ndk::ScopedAStatus ImsOrtcService::setOrtcRoomInfo(int32_t serial, const OrtcRoomInfo& info) {
    return bridge(this, serial, info, ::hal::packOrtcRoomInfo, &ImsOrtcComponent::setOrtcRoomInfo,
                  &ImsOrtcServiceResponse::setOrtcRoomInfoResponse, "control component is null!");
}

::ndk::ScopedAStatus ImsOrtcService::sendImsRtpData(int32_t serial, const ImsRtpDataInfo& info) {
    return bridge(this, serial, info, ::hal::packImsRtpDataInfo, &ImsOrtcComponent::sendImsRtpData,
                  &ImsOrtcServiceResponse::sendImsRtpDataResponse, "send data component is null!");
}

::ndk::ScopedAStatus ImsOrtcService::setImsRtpRemotePubIpAddr(int32_t serial, const ImsRtpPubIpAddrInfo& info) {
    return bridge(this, serial, info, ::hal::packImsRtpPubIpAddrInfo, &ImsOrtcComponent::setImsRtpRemotePubIpAddr,
                  &ImsOrtcServiceResponse::setImsRtpRemotePubIpAddrResponse, "update ip component is null!");
}

::ndk::ScopedAStatus ImsOrtcService::sendImsRtpRedunSignalMsg(int32_t serial, const ImsRtpRedunSignalMsg& msg) {
    // Deliberate: without a component this request, unlike the others, is dropped without a line. Readers of the log.
    const auto component = ::hal::getImsOrtcComponent();
    if (component == nullptr) return ::ndk::ScopedAStatus::ok();
    const auto reply =
        ::hal::obtainReplyMessage(this, [serial](const Message& answer) { answerSignalMsg(serial, answer); });
    component->sendImsRtpRedunSignalMsg(::hal::packImsRtpRedunSignalMsg(msg), reply);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
