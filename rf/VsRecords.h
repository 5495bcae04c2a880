#pragma once

#include <mindroid/Object.h>

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace hal {

// The records that a VsComponent delivers, each the `obj` of a notification. Filled before they are sent, not changed
// after that. The destructors stand in this library, so that its type information serves every library.

class VsClatState : public mindroid::Object {
public:
    VsClatState(uint8_t enabled, uint16_t frequency, uint8_t carrier, uint8_t antenna)
        : enable(enabled), freq(frequency), cc(carrier), ant(antenna) {}
    ~VsClatState() override;

    const uint8_t enable;
    const uint16_t freq;
    const uint8_t cc;
    const uint8_t ant;
};

// Entry 0 and entry 1 are the two combinations of the sharing pair.
class VsTxSharingState : public mindroid::Object {
public:
    VsTxSharingState(uint8_t enabled, std::array<uint16_t, 2> bands, std::array<uint16_t, 2> params1,
                     std::array<uint8_t, 2> params2)
        : enable(enabled), band(bands), param1(params1), param2(params2) {}
    ~VsTxSharingState() override;

    const uint8_t enable;
    const std::array<uint16_t, 2> band;
    const std::array<uint16_t, 2> param1;
    const std::array<uint8_t, 2> param2;
};

class VsIccEvent : public mindroid::Object {
public:
    // The bytes are cut to the 65,535 that `length` can tell.
    VsIccEvent(uint32_t eventId, std::vector<uint8_t> bytes)
        : event(eventId),
          length(static_cast<uint16_t>(bytes.size() < UINT16_MAX ? bytes.size() : UINT16_MAX)),
          data(std::move(bytes)) {}
    ~VsIccEvent() override;

    const uint32_t event;
    const uint16_t length;
    const std::vector<uint8_t> data;
};

// Answer to VsComponent::getRfIccInfo.
class VsRfIccInfo : public mindroid::Object {
public:
    VsRfIccInfo(uint8_t iccVersion, uint16_t bandBlacklist, uint8_t brindleFlag)
        : version(iccVersion), blacklist(bandBlacklist), brindle(brindleFlag) {}
    ~VsRfIccInfo() override;

    const uint8_t version;
    const uint16_t blacklist;
    const uint8_t brindle;
};

}  // namespace hal
