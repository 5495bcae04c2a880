// The IMS ORTC component of the benchmarks: sends every RTP payload back, and answers.

#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"

namespace {

using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
using mindroid::sp;

class EchoOrtcComponent final : public hal::ImsOrtcComponent {
public:
    void registerRecvImsRtpDataInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                                   const sp<Object>& obj) override {
        mReceivers->add(new Registrant(handler, callback, obj));
    }

    void sendImsRtpData(const hal::ImsRtpDataInfoType& data, const sp<Message>& reply) override {
        mReceivers->notify(new hal::SubsysInterfaceData<hal::ImsRtpDataInfoType>(data));
        sendErrorResponse(reply, 0);
    }

    // Sends as many payloads as value32 says.
    void setCallInfo(const hal::CallInfoType& info, const sp<Message>& reply) override {
        hal::ImsRtpDataInfoType data{};
        data.dataLen = 255;
        for (int32_t i = 0; i < info.value32; ++i) {
            mReceivers->notify(new hal::SubsysInterfaceData<hal::ImsRtpDataInfoType>(data));
        }
        sendErrorResponse(reply, 0);
    }

private:
    const sp<RegistrantList> mReceivers = new RegistrantList();
};

[[maybe_unused]] const bool sAdded = [] {
    hal::ComponentManager::getInstance()->add(new EchoOrtcComponent());
    return true;
}();

}  // namespace
