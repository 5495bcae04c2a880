#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsRtpPubIpAddrInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpPubIpAddrInfo";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t mediaType = 0;
    int32_t addrFamily = 0;
    int32_t rtpPort = 0;
    int32_t rtcpPort = 0;
    std::string ipAddr;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(
            Field{"slotId", &ImsRtpPubIpAddrInfo::slotId}, Field{"callId", &ImsRtpPubIpAddrInfo::callId},
            Field{"mediaType", &ImsRtpPubIpAddrInfo::mediaType}, Field{"addrFamily", &ImsRtpPubIpAddrInfo::addrFamily},
            Field{"rtpPort", &ImsRtpPubIpAddrInfo::rtpPort}, Field{"rtcpPort", &ImsRtpPubIpAddrInfo::rtcpPort},
            Field{"ipAddr", &ImsRtpPubIpAddrInfo::ipAddr});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("ImsRtpPubIpAddrInfo", *this); }
    auto operator<=>(const ImsRtpPubIpAddrInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
