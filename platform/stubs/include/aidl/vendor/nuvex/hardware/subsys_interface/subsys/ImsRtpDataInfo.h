#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsRtpDataInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpDataInfo";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t dataType = 0;
    std::vector<uint8_t> data;
    int32_t dataLen = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"slotId", &ImsRtpDataInfo::slotId}, Field{"callId", &ImsRtpDataInfo::callId},
                          Field{"dataType", &ImsRtpDataInfo::dataType}, Field{"data", &ImsRtpDataInfo::data},
                          Field{"dataLen", &ImsRtpDataInfo::dataLen});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("ImsRtpDataInfo", *this); }
    auto operator<=>(const ImsRtpDataInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
