#pragma once

#include "component/SubsysComponent.h"
#include "rf/VsRecords.h"

#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>

namespace hal {

// The companion of the RF component, built by another library: derive from it, construct it on a thread that has a
// looper and add it to the component manager before ComponentManager::init. The RF component finds it by its type and
// instance id.
class VsComponent : public SubsysComponent {
public:
    static constexpr int TYPE = 0;

    VsComponent() : SubsysComponent(TYPE) {}

    // Each keeps the callback and reports every event to it from then on. See VsRecords.h for the records. Thread: any.
    virtual Registration registerClatStateInd = 0;  // VsClatState
    virtual Registration registerTxSharingInd = 0;  // VsTxSharingState
    virtual Registration registerIccEventInd = 0;   // VsIccEvent

    // Answers, now or later and from any thread, by SubsysComponent::sendResponse on the message with a carrier of
    // VsRfIccInfo, or with an error alone. The caller asks again every 50 ms, five times; the first answer counts.
    // Thread: looper, the RF component's.
    virtual void getRfIccInfo(const mindroid::sp<mindroid::Message>& message) = 0;

    // Notify with an Integer 1 when the component is ready. Listeners added later are not told again of an earlier
    // state, so notify after ComponentManager::init.
    const mindroid::sp<mindroid::RegistrantList> mStateRegistrants = new mindroid::RegistrantList();
    // Notify with an Integer, non-zero when the screen is on.
    const mindroid::sp<mindroid::RegistrantList> mScreenStateRegistrants = new mindroid::RegistrantList();
};

}  // namespace hal
