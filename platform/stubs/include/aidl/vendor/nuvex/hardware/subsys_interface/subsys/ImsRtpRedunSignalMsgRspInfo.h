#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsRtpRedunSignalMsgRspInfo {
public:
    static constexpr const char* descriptor =
        "vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunSignalMsgRspInfo";

    int32_t rspField1 = 0;
    int32_t rspField2 = 0;
    int32_t rspField3 = 0;
    int32_t rspField4 = 0;
    int32_t rspField5 = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"rspField1", &ImsRtpRedunSignalMsgRspInfo::rspField1},
                          Field{"rspField2", &ImsRtpRedunSignalMsgRspInfo::rspField2},
                          Field{"rspField3", &ImsRtpRedunSignalMsgRspInfo::rspField3},
                          Field{"rspField4", &ImsRtpRedunSignalMsgRspInfo::rspField4},
                          Field{"rspField5", &ImsRtpRedunSignalMsgRspInfo::rspField5});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("ImsRtpRedunSignalMsgRspInfo", *this); }
    auto operator<=>(const ImsRtpRedunSignalMsgRspInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
