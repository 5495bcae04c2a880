#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsRtpRedunDataLinkStateInfo {
public:
    static constexpr const char* descriptor =
        "vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunDataLinkStateInfo";

    int32_t linkField1 = 0;
    int32_t linkField2 = 0;
    int32_t linkField3 = 0;
    int32_t linkField4 = 0;
    int32_t linkField5 = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"linkField1", &ImsRtpRedunDataLinkStateInfo::linkField1},
                          Field{"linkField2", &ImsRtpRedunDataLinkStateInfo::linkField2},
                          Field{"linkField3", &ImsRtpRedunDataLinkStateInfo::linkField3},
                          Field{"linkField4", &ImsRtpRedunDataLinkStateInfo::linkField4},
                          Field{"linkField5", &ImsRtpRedunDataLinkStateInfo::linkField5});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("ImsRtpRedunDataLinkStateInfo", *this); }
    auto operator<=>(const ImsRtpRedunDataLinkStateInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
