#include "ims/ImsOrtcServiceResponse.h"

#include "service/channel/ResponseInfo.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {
namespace {

SubsysResponseInfo responseInfo(int32_t serial, SUBSYS_Errno error) {
    SubsysResponseInfo info;
    populateImsOrtcResponseInfo(info, serial, error);
    return info;
}

}  // namespace

void populateImsOrtcResponseInfo(SubsysResponseInfo& info, int32_t serial, SUBSYS_Errno error) {
    populateResponseInfo(info, serial, error);
}

// Never destroyed: threads may still answer while the process ends.
::mindroid::sp<ImsOrtcServiceResponse>& ImsOrtcServiceResponse::sInstance =
    *new ::mindroid::sp<ImsOrtcServiceResponse>();

::mindroid::sp<ImsOrtcServiceResponse> ImsOrtcServiceResponse::getInstance() {
    if (sInstance == nullptr) sInstance = new ImsOrtcServiceResponse();
    return sInstance;
}

::ndk::ScopedAStatus ImsOrtcServiceResponse::setCallInfoResponse(int32_t serial, SUBSYS_Errno error) {
    callClients(&IImsOrtcResponse::setCallInfoResponse, responseInfo(serial, error));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ImsOrtcServiceResponse::setOrtcRoomInfoResponse(int32_t serial, SUBSYS_Errno error) {
    callClients(&IImsOrtcResponse::setOrtcRoomInfoResponse, responseInfo(serial, error));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ImsOrtcServiceResponse::sendImsRtpDataResponse(int32_t serial, SUBSYS_Errno error) {
    callClients(&IImsOrtcResponse::sendImsRtpDataResponse, responseInfo(serial, error));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ImsOrtcServiceResponse::setImsRtpRemotePubIpAddrResponse(int32_t serial, SUBSYS_Errno error) {
    callClients(&IImsOrtcResponse::setImsRtpRemotePubIpAddrResponse, responseInfo(serial, error));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus ImsOrtcServiceResponse::sendImsRtpRedunSignalMsgResponse(
    int32_t serial, SUBSYS_Errno error, const ImsRtpRedunSignalMsgRspInfo& rspInfo) {
    callClients(&IImsOrtcResponse::sendImsRtpRedunSignalMsgResponse, responseInfo(serial, error), rspInfo);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
