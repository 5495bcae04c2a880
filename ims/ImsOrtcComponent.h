#pragma once

#include "component/SubsysComponent.h"
#include "ims/ImsOrtcRecords.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>
#include <mindroid/sp.h>

#include <cstdint>

namespace hal {

// What the IMS ORTC media path asks of a device. The working component is a subclass in a library of its own, which
// adds an instance to ComponentManager before ComponentManager::init. This class itself accepts everything, answers
// nothing and reports no event, so that a component only overrides what it supports.
//
// Requests run on a binder thread (several may run at once) and must not block: hand the work to a thread of your own.
// The record is the caller's and ends with the call: copy it. Answer by SubsysComponent::sendResponse on the reply
// message, once, from any thread, also before the request returns. A message that is never sent leaves its request
// unanswered; there is no time-out.
//
// A register operation runs once, on the thread that starts the service, before the first request. Keep the handler and
// the callback (mindroid::Registrant does), and report each event to them with the record's carrier; from then on, from
// any thread. See ImsOrtcRecords.h for carriers.
//
// The virtual operations keep this order: the library of the component is built apart from this one.
class ImsOrtcComponent : public SubsysComponent {
public:
    static constexpr const char* TAG = "ImsOrtcComponent";
    static constexpr int32_t TYPE = 21;

    ImsOrtcComponent();

    void handleMessage(const mindroid::sp<mindroid::Message>& msg) override;
    // Deliberate: empty, it does not pass on to Component::init. Components override it and choose.
    void init(int32_t instanceId) override;

    // Carrier: ImsRtpPubIpAddrInfoType.
    virtual Registration registerLocalPubIpAddrChangedInd;
    // Carrier: ImsRtpDataInfoType.
    virtual Registration registerRecvImsRtpDataInd;
    // Carrier: OrtcStatusType.
    virtual Registration registerNotifyOrtcStatusInd;
    // Carrier: OrtcConnectInfoType.
    virtual Registration registerNotifyConnectInfoInd;
    // The service does not subscribe to the public-key events.
    virtual Registration registerRecvImsRtpRedunPublicKeyInd;
    // Carrier: ImsRtpRedunSignalMsgType.
    virtual Registration registerRecvImsRtpRedunSignalMsgInd;
    // Carrier: ImsRtpRedunDataLinkStateInfoType.
    virtual Registration registerNotifyImsRtpRedunDataLinkStateInd;
    virtual void unregisterRecvImsRtpRedunPublicKeyInd(const mindroid::sp<mindroid::Handler>& handler);
    virtual Registration registerRecvImsRtpRedunGetPublicKeyInd;

    // Answered by an error code alone.
    virtual void setCallInfo(const CallInfoType& info, const mindroid::sp<mindroid::Message>& reply);
    virtual void setOrtcRoomInfo(const OrtcRoomInfoType& info, const mindroid::sp<mindroid::Message>& reply);
    virtual void sendImsRtpData(const ImsRtpDataInfoType& info, const mindroid::sp<mindroid::Message>& reply);
    virtual void setImsRtpRemotePubIpAddr(const ImsRtpPubIpAddrInfoType& info,
                                          const mindroid::sp<mindroid::Message>& reply);
    // The service makes neither of these two requests.
    virtual void syncImsRtpRedunDataPathConfig(const ImsRtpRedunDataPathConfigInfoType& info,
                                               const mindroid::sp<mindroid::Message>& reply);
    virtual void sendImsRtpRedunPublicKey(const ImsRtpRedunPublicKeyInfoType& info,
                                          const mindroid::sp<mindroid::Message>& reply);
    // Answered by an error code and, where that is 0, a carrier of ImsRtpRedunSignalMsgRspInfoType.
    virtual void sendImsRtpRedunSignalMsg(const ImsRtpRedunSignalMsgType& msg,
                                          const mindroid::sp<mindroid::Message>& reply);
    // The service does not make this request.
    virtual void getImsRtpRedunRemotePublicKey(const ImsRtpRedunPublicKeyInfoType& info,
                                               const mindroid::sp<mindroid::Message>& reply);
};

// The first component that was added under TYPE, or null. Thread: any, once the components are added.
[[nodiscard]] mindroid::sp<ImsOrtcComponent> getImsOrtcComponent();

}  // namespace hal
