#pragma once

#include <mindroid/Handler.h>

namespace hal {

// The component manager's handler: it marks the thread that started the components, and ignores what it is sent.
class ComponentHandler final : public mindroid::Handler {
public:
    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;
};

}  // namespace hal
