#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class OrtcConnectInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.OrtcConnectInfo";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t roomId = 0;
    int32_t connectState = 0;
    std::string connectInfo;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"slotId", &OrtcConnectInfo::slotId}, Field{"callId", &OrtcConnectInfo::callId},
                          Field{"roomId", &OrtcConnectInfo::roomId},
                          Field{"connectState", &OrtcConnectInfo::connectState},
                          Field{"connectInfo", &OrtcConnectInfo::connectInfo});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("OrtcConnectInfo", *this); }
    auto operator<=>(const OrtcConnectInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
