#pragma once

#include <mindroid/Object.h>

#include <cstddef>

namespace hal {

// A carrier: one plain record that travels as an object, as the obj of an event or of a reply. The record is its first
// data member.
template <typename T>
class SubsysInterfaceData : public mindroid::Object {
public:
    explicit SubsysInterfaceData(const T& data) : mData(data) {}

    T mData;
};

// The record inside a carrier, for as long as the carrier lives. The class of the carrier may be another library's: the
// record is found by its position, where the first data member of a class that derives from Object alone stands. The
// caller knows the record by the event or the reply that brought it; nothing is checked.
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
