#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

enum class SUBSYS_Errno : int32_t {
    SUCCESS = 0,
    NOT_SUPPORTED = 1,
    GENERIC_FAILURE = 2,
    COMPONENT_ERROR_3 = 3,
    COMPONENT_ERROR_4 = 4,
    COMPONENT_ERROR_5 = 5,
    COMPONENT_ERROR_6 = 6,
    COMPONENT_ERROR_7 = 7,
    COMPONENT_ERROR_8 = 8,
    COMPONENT_ERROR_9 = 9,
};

// The name, or the number in digits for a value without one.
[[nodiscard]] inline std::string toString(SUBSYS_Errno value) {
    switch (value) {
        case SUBSYS_Errno::SUCCESS:
            return "SUCCESS";
        case SUBSYS_Errno::NOT_SUPPORTED:
            return "NOT_SUPPORTED";
        case SUBSYS_Errno::GENERIC_FAILURE:
            return "GENERIC_FAILURE";
        case SUBSYS_Errno::COMPONENT_ERROR_3:
            return "COMPONENT_ERROR_3";
        case SUBSYS_Errno::COMPONENT_ERROR_4:
            return "COMPONENT_ERROR_4";
        case SUBSYS_Errno::COMPONENT_ERROR_5:
            return "COMPONENT_ERROR_5";
        case SUBSYS_Errno::COMPONENT_ERROR_6:
            return "COMPONENT_ERROR_6";
        case SUBSYS_Errno::COMPONENT_ERROR_7:
            return "COMPONENT_ERROR_7";
        case SUBSYS_Errno::COMPONENT_ERROR_8:
            return "COMPONENT_ERROR_8";
        case SUBSYS_Errno::COMPONENT_ERROR_9:
            return "COMPONENT_ERROR_9";
    }
    return std::to_string(static_cast<int32_t>(value));
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys

namespace ndk::internal {

template <>
inline constexpr std::array<aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno, 10>
    enum_values<aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno> = {
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::SUCCESS,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::NOT_SUPPORTED,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::GENERIC_FAILURE,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_3,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_4,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_5,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_6,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_7,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_8,
        aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::COMPONENT_ERROR_9,
};

}  // namespace ndk::internal
