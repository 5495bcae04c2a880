#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class CallInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.CallInfo";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t callType = 0;
    int32_t callState = 0;
    std::string text1;
    std::string text2;
    std::string text3;
    std::string text4;
    std::string text5;
    std::string text6;
    int64_t value64 = 0;
    int32_t value32 = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"slotId", &CallInfo::slotId}, Field{"callId", &CallInfo::callId},
                          Field{"callType", &CallInfo::callType}, Field{"callState", &CallInfo::callState},
                          Field{"text1", &CallInfo::text1}, Field{"text2", &CallInfo::text2},
                          Field{"text3", &CallInfo::text3}, Field{"text4", &CallInfo::text4},
                          Field{"text5", &CallInfo::text5}, Field{"text6", &CallInfo::text6},
                          Field{"value64", &CallInfo::value64}, Field{"value32", &CallInfo::value32});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("CallInfo", *this); }
    auto operator<=>(const CallInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
