#include "ims/ImsOrtcComponent.h"

#include "component/ComponentManager.h"

#include <mindroid/Log.h>

namespace hal {

using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::sp;

ImsOrtcComponent::ImsOrtcComponent() : SubsysComponent(TYPE) {
    mindroid::Log::d(TAG, "create ImsOrtcComponent");
}

void ImsOrtcComponent::handleMessage(const sp<Message>& msg) {
    SubsysComponent::handleMessage(msg);
}

void ImsOrtcComponent::init(int32_t) {}

void ImsOrtcComponent::registerLocalPubIpAddrChangedInd(const sp<Handler>&, const sp<MessageCallback>&,
                                                        const sp<Object>&) {}
void ImsOrtcComponent::registerRecvImsRtpDataInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) {}
void ImsOrtcComponent::registerNotifyOrtcStatusInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) {}
void ImsOrtcComponent::registerNotifyConnectInfoInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) {
}
void ImsOrtcComponent::registerRecvImsRtpRedunPublicKeyInd(const sp<Handler>&, const sp<MessageCallback>&,
                                                           const sp<Object>&) {}
void ImsOrtcComponent::registerRecvImsRtpRedunSignalMsgInd(const sp<Handler>&, const sp<MessageCallback>&,
                                                           const sp<Object>&) {}
void ImsOrtcComponent::registerNotifyImsRtpRedunDataLinkStateInd(const sp<Handler>&, const sp<MessageCallback>&,
                                                                 const sp<Object>&) {}
void ImsOrtcComponent::unregisterRecvImsRtpRedunPublicKeyInd(const sp<Handler>&) {}
void ImsOrtcComponent::registerRecvImsRtpRedunGetPublicKeyInd(const sp<Handler>&, const sp<MessageCallback>&,
                                                              const sp<Object>&) {}

void ImsOrtcComponent::setCallInfo(const CallInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::setOrtcRoomInfo(const OrtcRoomInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::sendImsRtpData(const ImsRtpDataInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::setImsRtpRemotePubIpAddr(const ImsRtpPubIpAddrInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::syncImsRtpRedunDataPathConfig(const ImsRtpRedunDataPathConfigInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::sendImsRtpRedunPublicKey(const ImsRtpRedunPublicKeyInfoType&, const sp<Message>&) {}
void ImsOrtcComponent::sendImsRtpRedunSignalMsg(const ImsRtpRedunSignalMsgType&, const sp<Message>&) {}
void ImsOrtcComponent::getImsRtpRedunRemotePublicKey(const ImsRtpRedunPublicKeyInfoType&, const sp<Message>&) {}

sp<ImsOrtcComponent> getImsOrtcComponent() {
    return getComponent<ImsOrtcComponent>(ImsOrtcComponent::TYPE);
}

}  // namespace hal
