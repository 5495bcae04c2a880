#pragma once

#include <mindroid/Handler.h>

#include <cstdint>

namespace hal {

// A part of a component with a handler of its own, on the looper of the thread that constructs it.
class Module : public mindroid::Handler {
public:
    Module();

    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;
    // Called once the component itself is initialised. Thread: looper.
    virtual void onInit();

    // The component's instance id. Thread: looper.
    void setInstanceId(int32_t instanceId);

protected:
    int32_t mInstanceId = 0;
};

}  // namespace hal
