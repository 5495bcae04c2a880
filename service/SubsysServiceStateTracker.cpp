#include "service/SubsysServiceStateTracker.h"

#include "service/channel/SubsysServiceIndication.h"

#include <mindroid/Boxes.h>
#include <mindroid/Log.h>

using ::mindroid::Boolean;
using ::mindroid::Integer;
using ::mindroid::Log;
using ::mindroid::Message;
using ::mindroid::Object;
using ::mindroid::sp;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

namespace {
constexpr int32_t MSG_HIDL_STATE_CHANGED = 1;
constexpr int32_t MSG_SUBSYS_STATE_CHANGED = 2;
}  // namespace

// Never destroyed: threads may still report while the process ends.
sp<SubsysServiceStateTracker>& SubsysServiceStateTracker::sSubsysServiceStateTracker =
    *new sp<SubsysServiceStateTracker>();

SubsysServiceStateTracker::SubsysServiceStateTracker() {
    sSubsysServiceStateTracker = this;
}

void SubsysServiceStateTracker::init() {
    Log::d(TAG, "SubsysServiceStateTracker init");
    post(MSG_SUBSYS_STATE_CHANGED, new Boolean(true));
}

void SubsysServiceStateTracker::setHidlState(uint8_t state) {
    Log::d(TAG, "setHidlState state %d", state);
    post(MSG_HIDL_STATE_CHANGED, new Integer(state));
}

void SubsysServiceStateTracker::post(int32_t what, const sp<Object>& state) {
    if (!sSubsysServiceStateTracker) {
        Log::e(TAG, "setHidlState ignor.");
        return;
    }
    sSubsysServiceStateTracker->obtainMessage(what, state)->sendToTarget();
}

void SubsysServiceStateTracker::handleMessage(const sp<Message>& message) {
    if (!message->obj) return;
    if (message->what == MSG_HIDL_STATE_CHANGED) {
        onHidlStateChanged(static_cast<const Integer*>(message->obj.get())->value());
    } else if (message->what == MSG_SUBSYS_STATE_CHANGED) {
        onSubsysStateChanged(static_cast<const Boolean*>(message->obj.get())->value());
    }
}

void SubsysServiceStateTracker::onHidlStateChanged(int32_t state) {
    Log::d(TAG, "onHidlStateChanged state %d", state);
    if (state == mHidlState) return;
    mHidlState = static_cast<uint8_t>(state);
    if (state != 0) notifySubsysState(true);
}

void SubsysServiceStateTracker::onSubsysStateChanged(uint8_t state) {
    Log::d(TAG, "onSubsysStateChanged state : %d", state);
    if (state == mSubsysState) return;
    Log::d(TAG, "onSubsysStateChanged changed.");
    mPendingNotify = true;
    mSubsysState = state;
    notifySubsysState(false);
}

void SubsysServiceStateTracker::notifySubsysState(bool force) {
    if (!force && !voteOnNotify()) return;
    if (const auto indication = SubsysServiceIndication::getInstance()) {
        indication->sendSubsysStateChanged(mSubsysState);
    }
    Log::d(TAG, "send subsys state changed %d", mSubsysState);
    mPendingNotify = false;
}

bool SubsysServiceStateTracker::voteOnNotify() const {
    return mHidlState != 0 && mPendingNotify;
}

uint8_t SubsysServiceStateTracker::checkServiceState() const {
    return mSubsysState;
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
