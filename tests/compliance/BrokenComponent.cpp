// A component library that breaks one rule, which FAULT in the environment names.
#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"
#include "rf/VsComponent.h"

#include <mindroid/RegistrantList.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

using hal::SUBSYS_Errno;
using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
using mindroid::sp;

bool has(const char* fault) {
    const char* const given = getenv("FAULT");
    return given != nullptr && std::strcmp(given, fault) == 0;
}

template <typename Record>
sp<Object> carrierOf(const Record& record) {
    return has("smallRecord") ? sp<Object>(new mindroid::Byte(1)) : new hal::SubsysInterfaceData<Record>(record);
}

class BrokenIms final : public hal::ImsOrtcComponent {
public:
    void init(int32_t) override {
        if (has("crash")) std::abort();
    }
    void registerNotifyOrtcStatusInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                     const sp<Object>& obj) override {
        mListeners->add(new Registrant(handler, callback, obj));
    }
    void setCallInfo(const hal::CallInfoType&, const sp<Message>& reply) override {
        if (has("drops")) return;
        if (has("keeps")) mKept = reply;
        if (has("keeps")) return;
        if (has("holds")) usleep(900'000);
        while (has("hangs")) usleep(1'000'000);
        sendResponse(reply, SUBSYS_Errno::SUCCESS);
        if (has("twice")) sendResponse(reply, SUBSYS_Errno::SUCCESS);
        mListeners->notify(has("noRecord") ? nullptr : carrierOf(hal::OrtcStatusType{}));
    }
    void sendImsRtpRedunSignalMsg(const hal::ImsRtpRedunSignalMsgType&, const sp<Message>& reply) override {
        if (has("noValue")) return sendResponse(reply, SUBSYS_Errno::SUCCESS);
        sendResponse(reply, SUBSYS_Errno::SUCCESS, carrierOf(hal::ImsRtpRedunSignalMsgRspInfoType{}));
    }

private:
    const sp<RegistrantList> mListeners = new RegistrantList();
    sp<Message> mKept;
};

class BrokenVs final : public hal::VsComponent {
public:
    void registerClatStateInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) override {}
    void registerTxSharingInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) override {}
    void registerIccEventInd(const sp<Handler>&, const sp<MessageCallback>&, const sp<Object>&) override {}
    void getRfIccInfo(const sp<Message>& message) override {
        sendResponse(message, SUBSYS_Errno::SUCCESS, carrierOf(hal::VsRfIccInfo{}));
    }
};

[[maybe_unused]] const bool sAdded = [] {
    auto* const manager = hal::ComponentManager::getInstance();
    if (has("nothing")) return false;
    manager->add(new BrokenIms());
    if (has("neverReady")) manager->add(new BrokenVs());
    return true;
}();

}  // namespace
