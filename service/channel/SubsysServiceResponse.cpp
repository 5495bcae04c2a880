#include "service/channel/SubsysServiceResponse.h"

#include <mindroid/Log.h>
#include <utils/ByteVector.h>

using ::mindroid::Log;
using ::mindroid::sp;
using ::ndk::ScopedAStatus;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Never destroyed: threads may still answer while the process ends.
sp<SubsysServiceResponse>& SubsysServiceResponse::sInstance = *new sp<SubsysServiceResponse>();

sp<SubsysServiceResponse> SubsysServiceResponse::getInstance() {
    if (!sInstance) sInstance = new SubsysServiceResponse();
    return sInstance;
}

template <typename Method, typename... Args>
ScopedAStatus SubsysServiceResponse::respond(Method method, int32_t serial, SUBSYS_Errno error, const Args&... args) {
    SubsysResponseInfo info;
    populateResponseInfo(info, serial, error);
    if (const auto callback = getCallback()) (void)((*callback).*method)(info, args...);
    return ScopedAStatus::ok();
}

ScopedAStatus SubsysServiceResponse::getSwtpStatusResponse(int32_t serial, SUBSYS_Errno error, uint8_t status) {
    return respond(&ISubsysResponse::getSwtpStatusResponse, serial, error, static_cast<int8_t>(status));
}

ScopedAStatus SubsysServiceResponse::getLcdInfoResponse(int32_t serial, SUBSYS_Errno error,
                                                        const std::string& lcdInfo) {
    return respond(&ISubsysResponse::getLcdInfoResponse, serial, error, lcdInfo);
}

ScopedAStatus SubsysServiceResponse::setMipiFreqClkResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::setMipiFreqClkResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::setOscFreqClkResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::setOscFreqClkResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::getNvramDataResponse(int32_t serial, SUBSYS_Errno error, const uint8_t* buffer,
                                                          uint32_t length) {
    if (length == 0) Log::e(TAG, "%s getNvramDataResponse bufInfo is NULL !", "getNvramDataResponse");
    const std::vector<uint8_t> bytes = ::subsys_utils::toVec(buffer, length);
    return respond(&ISubsysResponse::getNvramDataResponse, serial, error, std::string(bytes.begin(), bytes.end()));
}

ScopedAStatus SubsysServiceResponse::setIccTuningStateResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::setIccTuningStateResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::setIccWifiAntStateResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::setIccWifiAntStateResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::setIccSatelliteAntStateResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::setIccSatelliteAntStateResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::getIccStateResponse(int32_t serial, SUBSYS_Errno error,
                                                         const IccStateInfo& state) {
    return respond(&ISubsysResponse::getIccStateResponse, serial, error, state);
}

ScopedAStatus SubsysServiceResponse::killProcessResponse(int32_t serial, SUBSYS_Errno error) {
    return respond(&ISubsysResponse::killProcessResponse, serial, error);
}

ScopedAStatus SubsysServiceResponse::sendIccCmdResponse(int32_t serial, SUBSYS_Errno error, int32_t reqId,
                                                        const uint8_t* buffer, uint32_t length) {
    IccRespInfo respInfo;
    respInfo.reqId = static_cast<int8_t>(reqId);
    respInfo.data = ::subsys_utils::toVec(buffer, length);
    return respond(&ISubsysResponse::sendIccCmdResponse, serial, error, respInfo);
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
