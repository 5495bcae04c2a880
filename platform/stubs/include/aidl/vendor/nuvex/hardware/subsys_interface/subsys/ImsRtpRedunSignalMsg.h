#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsRtpRedunSignalMsg {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunSignalMsg";

    int32_t msgField1 = 0;
    int32_t msgField2 = 0;
    int32_t msgField3 = 0;
    int32_t msgField4 = 0;
    int32_t msgField5 = 0;
    std::string msg;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(
            Field{"msgField1", &ImsRtpRedunSignalMsg::msgField1}, Field{"msgField2", &ImsRtpRedunSignalMsg::msgField2},
            Field{"msgField3", &ImsRtpRedunSignalMsg::msgField3}, Field{"msgField4", &ImsRtpRedunSignalMsg::msgField4},
            Field{"msgField5", &ImsRtpRedunSignalMsg::msgField5}, Field{"msg", &ImsRtpRedunSignalMsg::msg});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("ImsRtpRedunSignalMsg", *this); }
    auto operator<=>(const ImsRtpRedunSignalMsg&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
