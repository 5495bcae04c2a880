#pragma once

#include "rf/IccPluginApi.h"

#include <mindroid/Object.h>

#include <cstdint>
#include <vector>

namespace hal {

// What the plugin reported, on its way to the proxy's thread: a copy, so that the plugin's buffer is free at once.
class IccEvent : public mindroid::Object {
public:
    // Without data, or with a size below 1, the event carries none.
    IccEvent(IccEventType eventType, const void* payload, int payloadSize) : type(eventType), size(payloadSize) {
        if (payload == nullptr || payloadSize < 1) return;
        const auto* bytes = static_cast<const uint8_t*>(payload);
        data.assign(bytes, bytes + payloadSize);
    }

    const IccEventType type;
    std::vector<uint8_t> data;
    // As the plugin gave it, below 1 too.
    const int size;
};

}  // namespace hal
