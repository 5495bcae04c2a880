// An IMS ORTC media path: keeps the state of one call and reports it.
#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>
#include <mindroid/RegistrantList.h>

namespace {

using hal::SUBSYS_Errno;
using mindroid::Handler;
using mindroid::HandlerThread;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
using mindroid::Runnable;
using mindroid::sp;

template <typename Record>
sp<Object> carrierOf(const Record& record) {
    return new hal::SubsysInterfaceData<Record>(record);
}

class MyComponent final : public hal::ImsOrtcComponent {
public:
    // Runs on the daemon's main thread, before any request.
    void init(int32_t instanceId) override {
        ImsOrtcComponent::init(instanceId);
        mThread->start();
        mWork = new Handler(mThread->getLooper());
    }

    void registerNotifyOrtcStatusInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                     const sp<Object>& obj) override {
        mStatusListeners->add(new Registrant(handler, callback, obj));
    }

    // Requests come on binder threads, which must not wait: the work is done on the component's own thread. `info` and
    // `reply` are copied into the task.
    void setCallInfo(const hal::CallInfoType& info, const sp<Message>& reply) override {
        const sp<Runnable> task = new Runnable([this, info, reply] {
            mCallState = info.callState;
            sendResponse(reply, SUBSYS_Errno::SUCCESS);
            mStatusListeners->notify(carrierOf(hal::OrtcStatusType{info.slotId, info.callId, 0, 0, mCallState}));
        });
        mWork->obtainMessage(task)->sendToTarget();
    }

    // What is quick may be answered at once.
    void sendImsRtpRedunSignalMsg(const hal::ImsRtpRedunSignalMsgType& msg, const sp<Message>& reply) override {
        if (msg.msgField1 == 0) return sendResponse(reply, SUBSYS_Errno::NOT_SUPPORTED);
        const hal::ImsRtpRedunSignalMsgRspInfoType answer{msg.msgField1, 2, 3, 0, 4, 5};
        sendResponse(reply, SUBSYS_Errno::SUCCESS, carrierOf(answer));
    }

private:
    const sp<HandlerThread> mThread = new HandlerThread("my_component");
    sp<Handler> mWork;
    const sp<RegistrantList> mStatusListeners = new RegistrantList();
    // Of the component's own thread, as all that several requests share.
    int32_t mCallState = 0;
};

// Loading the library adds the component.
[[maybe_unused]] const bool sAdded = [] {
    hal::ComponentManager::getInstance()->add(new MyComponent());
    return true;
}();

}  // namespace
