#include "ims/ImsOrtcServiceIndication.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Never destroyed: threads may still report while the process ends.
::mindroid::sp<ImsOrtcServiceIndication>& ImsOrtcServiceIndication::sInstance =
    *new ::mindroid::sp<ImsOrtcServiceIndication>();

::mindroid::sp<ImsOrtcServiceIndication> ImsOrtcServiceIndication::getInstance() {
    if (sInstance == nullptr) sInstance = new ImsOrtcServiceIndication();
    return sInstance;
}

void ImsOrtcServiceIndication::LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo& info) {
    callClients(&IImsOrtcIndication::LocalPubIpAddrChanged, info);
}

void ImsOrtcServiceIndication::recvImsRtpData(const ImsRtpDataInfo& info) {
    callClients(&IImsOrtcIndication::recvImsRtpData, info);
}

void ImsOrtcServiceIndication::notifyOrtcStatus(const OrtcStatus& status) {
    callClients(&IImsOrtcIndication::notifyOrtcStatus, status);
}

void ImsOrtcServiceIndication::notifyConnectInfo(const OrtcConnectInfo& info) {
    callClients(&IImsOrtcIndication::notifyConnectInfo, info);
}

void ImsOrtcServiceIndication::recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg& msg) {
    callClients(&IImsOrtcIndication::recvImsRtpRedunSignalMsgInd, msg);
}

void ImsOrtcServiceIndication::notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo& info) {
    callClients(&IImsOrtcIndication::notifyImsRtpRedunDataLinkStateInd, info);
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
