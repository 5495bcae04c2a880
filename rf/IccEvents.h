#pragma once

#include "rf/IccPluginApi.h"

#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>

#include <cstdint>
#include <optional>

namespace hal {

// The listeners of the plugin's events, and what turns an event into the record that they get.
class IccEvents {
public:
    // Added to an event's type, gives the `what` of its message.
    static constexpr uint32_t MESSAGE_BASE = 1000;

    // Puts the callback in the place of what the handler registered for this event before. An event that comes while it
    // changes places is missed. Thread: any.
    void add(IccEventType type, const mindroid::sp<mindroid::Handler>& handler,
             const mindroid::sp<mindroid::MessageCallback>& callback, const mindroid::sp<mindroid::Object>& obj);

    // Tells the listeners of the event in the message, whose obj is an IccEvent. Thread: proxy.
    void handleMessage(const mindroid::sp<mindroid::Message>& message);

private:
    struct Kind;
    // Null for a type that no listener can ask for.
    static const Kind* findKind(uint32_t type);

    template <typename Record>
    static std::optional<Record> readEvent(const mindroid::sp<mindroid::Message>& message);
    void handleIccStateChangedInd(const mindroid::sp<mindroid::Message>& message);
    void handleClatStateInd(const mindroid::sp<mindroid::Message>& message);
    void handleDeviceErrInd(const mindroid::sp<mindroid::Message>& message);
    void handleIccPercChangedInd(const mindroid::sp<mindroid::Message>& message);
    void handleIccCoexAntChangedInd(const mindroid::sp<mindroid::Message>& message);

    const mindroid::sp<mindroid::RegistrantList> mIccStateRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mIccClatInfoRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mIccDeviceErrRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mIccPercChangeRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mIccInfoChangedRegistrants = new mindroid::RegistrantList();
};

}  // namespace hal
