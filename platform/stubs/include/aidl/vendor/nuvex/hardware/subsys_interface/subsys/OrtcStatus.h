#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class OrtcStatus {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.OrtcStatus";

    int32_t slotId = 0;
    int32_t callId = 0;
    int32_t roomId = 0;
    int32_t reason = 0;
    int32_t status = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"slotId", &OrtcStatus::slotId}, Field{"callId", &OrtcStatus::callId},
                          Field{"roomId", &OrtcStatus::roomId}, Field{"reason", &OrtcStatus::reason},
                          Field{"status", &OrtcStatus::status});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("OrtcStatus", *this); }
    auto operator<=>(const OrtcStatus&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
