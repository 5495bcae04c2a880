#pragma once

#include "rf/IccPluginApi.h"

#include <mindroid/Object.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace hal {

// What the plugin reported, on its way to the proxy's thread: a copy, so that the plugin's buffer is free at once.
class IccEvent : public mindroid::Object {
public:
    // Without data, or with a size below 1, the event carries none.
    IccEvent(IccEventType eventType, const void* payload, int payloadSize, mindroid::sp<mindroid::Object> backlogPlace)
        : type(eventType), size(payloadSize), place(std::move(backlogPlace)) {
        if (payload == nullptr || payloadSize < 1) return;
        const auto* bytes = static_cast<const uint8_t*>(payload);
        data.assign(bytes, bytes + std::min(payloadSize, MAX_RECORD_SIZE));
    }

    const IccEventType type;
    // The first bytes of the payload only: nobody reads more than a record, and a plugin may claim any size.
    std::vector<uint8_t> data;
    // As the plugin gave it; says nothing about data.
    const int size;
    const mindroid::sp<mindroid::Object> place;

private:
    static constexpr int MAX_RECORD_SIZE = 36;
    static_assert(MAX_RECORD_SIZE ==
                  std::max({sizeof(IccStateInfoType), sizeof(IccAclStatusRspMsgType), sizeof(IccDeviceErrType),
                            sizeof(IccPercStateType), sizeof(IccCoexAntType)}));
};

}  // namespace hal
