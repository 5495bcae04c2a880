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

class IccStateInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccStateInfo";

    int8_t state = 0;
    int8_t bypass = 0;
    int8_t modeNum = 0;
    std::vector<uint8_t> modeTypes;
    std::vector<uint8_t> modeValues;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"state", &IccStateInfo::state}, Field{"bypass", &IccStateInfo::bypass},
                          Field{"modeNum", &IccStateInfo::modeNum}, Field{"modeTypes", &IccStateInfo::modeTypes},
                          Field{"modeValues", &IccStateInfo::modeValues});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccStateInfo", *this); }
    auto operator<=>(const IccStateInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
