#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class OrtcRoomInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.OrtcRoomInfo";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t roomId = 0;
    int32_t roomState = 0;
    int32_t action = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"slotId", &OrtcRoomInfo::slotId}, Field{"callId", &OrtcRoomInfo::callId},
                          Field{"roomId", &OrtcRoomInfo::roomId}, Field{"roomState", &OrtcRoomInfo::roomState},
                          Field{"action", &OrtcRoomInfo::action});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("OrtcRoomInfo", *this); }
    auto operator<=>(const OrtcRoomInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
