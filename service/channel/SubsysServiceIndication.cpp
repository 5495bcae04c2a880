#include "service/channel/SubsysServiceIndication.h"

#include <mindroid/Log.h>

using ::mindroid::Log;
using ::mindroid::sp;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Never destroyed: threads may still report while the process ends.
sp<SubsysServiceIndication>& SubsysServiceIndication::sInstance = *new sp<SubsysServiceIndication>();

sp<SubsysServiceIndication> SubsysServiceIndication::getInstance() {
    if (!sInstance) sInstance = new SubsysServiceIndication();
    return sInstance;
}

template <typename Method, typename Arg>
void SubsysServiceIndication::indicate(Method method, const Arg& arg) {
    const auto callback = getCallback();
    if (!callback) {
        Log::e(TAG, "mSubsysIndication null");
        return;
    }
    (void)((*callback).*method)(arg);
}

void SubsysServiceIndication::sendSubsysStateChanged(uint8_t state) {
    indicate(&ISubsysIndication::sendSubsysStateChanged, state != 0);
}

void SubsysServiceIndication::sendSwtpStatusChanged(uint8_t status) {
    indicate(&ISubsysIndication::sendSwtpStatusChanged, static_cast<int8_t>(status));
}

void SubsysServiceIndication::sendiccStateChanged(const IccStateInfo& info) {
    indicate(&ISubsysIndication::sendiccStateChanged, info);
}

void SubsysServiceIndication::notifyIccPercStateChangedInd(const IccPerceptionInfo& info) {
    indicate(&ISubsysIndication::notifyIccPercStateChangedInd, info);
}

void SubsysServiceIndication::notifyIccInfoChanged(const IccIndInfo& info) {
    indicate(&ISubsysIndication::notifyIccInfoChanged, info);
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
