#pragma once

#include "component/SubsysInterfaceData.h"

#include <mindroid/Object.h>

#include <cstddef>

namespace hal {

// The record inside a carrier, for as long as the carrier lives. The carrier's class is another library's and unknown
// here, so this is no cast to a class: the record stands where the first data member of such a class stands.
template <typename Record>
[[nodiscard]] const Record& carriedRecord(const mindroid::Object& carrier) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    constexpr size_t OFFSET = offsetof(SubsysInterfaceData<Record>, mData);
#pragma GCC diagnostic pop
    const void* record = reinterpret_cast<const std::byte*>(&carrier) + OFFSET;
    return *static_cast<const Record*>(record);
}

}  // namespace hal
