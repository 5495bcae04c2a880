#pragma once

#include "component/Component.h"
#include "component/ComponentSingleton.h"
#include "component/Interface.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <mindroid/HandlerThread.h>

#include <utility>

namespace hal {

using interface::SUBSYS_Errno;

// A component whose replies carry a SUBSYS_Errno. The integer replies of the base are hidden.
class SubsysComponent : public Component {
public:
    static constexpr const char* TAG = "SubsysComponent";

    explicit SubsysComponent(int32_t type);
    ~SubsysComponent() override;

    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;

    // Answers without a value; obj is left as it was. Thread: any.
    static void sendResponse(const mindroid::sp<mindroid::Message>& reply, SUBSYS_Errno error);
    // Answers with a value of one of the types in Boxing.h.
    // Deliberate: a failed reply carries no value, obj is left as it was. Readers of a reply look at the error first.
    // Thread: any.
    template <typename... Value>
    static void sendResponse(const mindroid::sp<mindroid::Message>& reply, SUBSYS_Errno error, const Value&... value) {
        mindroid::sp<mindroid::Object> boxed = box(value...);
        if (error == SUBSYS_Errno::SUCCESS) reply->obj = std::move(boxed);
        sendReply(reply, static_cast<int32_t>(error));
    }

    // A new T(id, thread) on a thread of its own, which becomes ComponentSingleton<T>::sInstance.
    template <typename T>
    [[nodiscard]] static mindroid::sp<T> createDedicateProxy(int32_t id) {
        mindroid::sp<mindroid::HandlerThread> thread = new mindroid::HandlerThread();
        thread->start();
        mindroid::sp<ComponentSingleton<T>> singleton = new ComponentSingleton<T>(id, thread);
        return ComponentSingleton<T>::sInstance;
    }

protected:
    // For subclasses; nothing here uses it.
    mindroid::sp<mindroid::VoteBox> mVoteBox;
};

}  // namespace hal
