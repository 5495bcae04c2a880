#pragma once

#include "component/SubsysInterfaceData.h"

#include <cstddef>
#include <cstdint>

// The records that a VsComponent delivers, each as the obj of a notification or of a reply. The object derives from
// mindroid::Object alone; the fields stand behind it in this order, each aligned to its size. It is known by the
// notification that brings it, never by its class, so SubsysInterfaceData<record> serves, and so does a class with the
// same fields. It is filled before it is sent and not changed after that.
namespace hal {

struct VsClatState {
    uint8_t enable;
    uint16_t freq;
    uint8_t cc;
    uint8_t ant;
};
static_assert(sizeof(VsClatState) == 6);

// Entry 0 and entry 1 are the two combinations of the sharing pair.
struct VsTxSharingState {
    uint8_t enable;
    uint16_t band[2];
    uint16_t param1[2];
    uint8_t param2[2];
};
static_assert(sizeof(VsTxSharingState) == 12);

// `length` bytes of data stand right behind the length. Capacity is the sender's choice; the receiver goes by the
// length alone.
template <size_t Capacity>
struct VsIccEvent {
    uint32_t event;
    uint16_t length;
    uint8_t data[Capacity];
};
static_assert(sizeof(VsIccEvent<2>) == 8);

// Answer to VsComponent::getRfIccInfo.
struct VsRfIccInfo {
    uint8_t version;
    uint16_t blacklist;
    uint8_t brindle;
};
static_assert(sizeof(VsRfIccInfo) == 6);

}  // namespace hal
