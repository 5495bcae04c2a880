#pragma once

#include "component/SubsysComponent.h"
#include "rf/VsRecords.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>
#include <mindroid/Runnable.h>

namespace hal {

// The companion of the RF component, built by another library: derive from it, construct it on a thread that has a
// looper and add it to the component manager before ComponentManager::init. The RF component finds it by its type and
// instance id.
class VsComponent : public SubsysComponent {
public:
    static constexpr int TYPE = 0;

    VsComponent() : SubsysComponent(TYPE) {}

    // Each keeps the callback and from then on has it run on the handler's looper, with a message whose obj carries the
    // record named, see VsRecords.h. A Registrant made of the three arguments does that. Any.
    virtual void registerClatStateInd(const mindroid::sp<mindroid::Handler>& handler,
                                      const mindroid::sp<mindroid::MessageCallback>& callback,
                                      const mindroid::sp<mindroid::Object>& obj) = 0;  // VsClatState
    virtual void registerTxSharingInd(const mindroid::sp<mindroid::Handler>& handler,
                                      const mindroid::sp<mindroid::MessageCallback>& callback,
                                      const mindroid::sp<mindroid::Object>& obj) = 0;  // VsTxSharingState
    virtual void registerIccEventInd(const mindroid::sp<mindroid::Handler>& handler,
                                     const mindroid::sp<mindroid::MessageCallback>& callback,
                                     const mindroid::sp<mindroid::Object>& obj) = 0;  // VsIccEvent

    // Answers, now or later and from any thread, by SubsysComponent::sendResponse on the message with a carrier of
    // VsRfIccInfo, or with an error alone. The caller asks again every 50 ms, five times; the first answer counts.
    // Looper of the RF component.
    virtual void getRfIccInfo(const mindroid::sp<mindroid::Message>& message) = 0;

    // Notify with an Integer 1 when the component is ready. Listeners added later are not told again of an earlier
    // state, so notify after ComponentManager::init.
    const mindroid::sp<mindroid::RegistrantList> mStateRegistrants = new mindroid::RegistrantList();
    // Notify with an Integer, non-zero when the screen is on.
    const mindroid::sp<mindroid::RegistrantList> mScreenStateRegistrants = new mindroid::RegistrantList();
};

}  // namespace hal
