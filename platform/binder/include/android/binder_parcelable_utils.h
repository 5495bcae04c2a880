#pragma once

// What records say about themselves. Thread: any.

#include <android/binder_parcel_utils.h>

#include <cstdint>

namespace ndk {

// Whether a record may be sent to a process that was built apart from this one.
enum : int32_t {
    STABILITY_LOCAL = 0,
    STABILITY_VENDOR = STABILITY_LOCAL,
    STABILITY_VINTF = 1,
};
using parcelable_stability_t = int32_t;

}  // namespace ndk
