// Any record that components and a plugin may report or answer: of the right size, with any content.

#include "component/ModuleManager.h"
#include "ims/ImsOrtcComponent.h"
#include "rf/VsComponent.h"
#include "tests/fuzz/support/System.h"
#include "tests/rf/IccPluginModel.h"

#include <mindroid/Boxes.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

namespace {

using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::sp;

using Target = const sp<Handler>&;
using OnEvent = const sp<MessageCallback>&;
using Extra = const sp<Object>&;
using Reply = const sp<Message>&;

template <typename Record>
sp<Object> carrierOf(FuzzedDataProvider& input) {
    Record record{};
    (void)input.ConsumeData(&record, sizeof(record));
    // Trusted: the bytes that it announces are there.
    if constexpr (requires { record.length; }) record.length = std::min<uint16_t>(record.length, sizeof(record.data));
    return new hal::SubsysInterfaceData<Record>(record);
}

enum Event { CLAT, TX_SHARING, ICC_EVENT, ADDRESS, RTP, STATUS, CONNECT, SIGNAL, LINK, EVENTS };
// What else an input may hold.
enum Other { ANSWER = EVENTS, PLUGIN, STATE };

sp<Object> carrierOf(size_t event, FuzzedDataProvider& input) {
    static constexpr sp<Object> (*MAKERS[EVENTS])(FuzzedDataProvider&) = {
        carrierOf<hal::VsClatState>,
        carrierOf<hal::VsTxSharingState>,
        carrierOf<hal::VsIccEvent<256>>,
        carrierOf<hal::ImsRtpPubIpAddrInfoType>,
        carrierOf<hal::ImsRtpDataInfoType>,
        carrierOf<hal::OrtcStatusType>,
        carrierOf<hal::OrtcConnectInfoType>,
        carrierOf<hal::ImsRtpRedunSignalMsgType>,
        carrierOf<hal::ImsRtpRedunDataLinkStateInfoType>,
    };
    return MAKERS[event](input);
}

sp<Registrant> sListeners[EVENTS];

void listen(Event event, Target handler, OnEvent callback, Extra obj) {
    sListeners[event] = new Registrant(handler, callback, obj);
}

struct VsComponent : hal::VsComponent {
    void registerClatStateInd(Target t, OnEvent e, Extra x) override { listen(CLAT, t, e, x); }
    void registerTxSharingInd(Target t, OnEvent e, Extra x) override { listen(TX_SHARING, t, e, x); }
    void registerIccEventInd(Target t, OnEvent e, Extra x) override { listen(ICC_EVENT, t, e, x); }
    void getRfIccInfo(Reply reply) override { sendResponse(reply, hal::SUBSYS_Errno::SUCCESS); }
};

struct ImsComponent : hal::ImsOrtcComponent {
    void registerLocalPubIpAddrChangedInd(Target t, OnEvent e, Extra x) override { listen(ADDRESS, t, e, x); }
    void registerRecvImsRtpDataInd(Target t, OnEvent e, Extra x) override { listen(RTP, t, e, x); }
    void registerNotifyOrtcStatusInd(Target t, OnEvent e, Extra x) override { listen(STATUS, t, e, x); }
    void registerNotifyConnectInfoInd(Target t, OnEvent e, Extra x) override { listen(CONNECT, t, e, x); }
    void registerRecvImsRtpRedunSignalMsgInd(Target t, OnEvent e, Extra x) override { listen(SIGNAL, t, e, x); }
    void registerNotifyImsRtpRedunDataLinkStateInd(Target t, OnEvent e, Extra x) override { listen(LINK, t, e, x); }
    void sendImsRtpRedunSignalMsg(const hal::ImsRtpRedunSignalMsgType&, Reply reply) override {
        sendResponse(reply, error, answer);
    }

    hal::SUBSYS_Errno error{};
    sp<Object> answer;
};

struct RfComponent : hal::RfSubsysComponent {
    void getSwtpStatus(Reply reply) override { Component::sendResponse(reply, error, value); }
    void getNvramData(int32_t, int32_t, Reply reply) override {
        Component::sendResponse(reply, error, data.data(), static_cast<uint32_t>(data.size()));
    }

    int32_t error = 0;
    uint8_t value = 0;
    std::vector<uint8_t> data;
};

// The components are ready when it says so.
struct Voter : hal::Component {
    Voter() : Component(VOTE_MODE_TICKET, /*type=*/99) { mModuleManager->addModule(new hal::Module()); }
};

ImsComponent* sIms = nullptr;
RfComponent* sRf = nullptr;
Voter* sVoter = nullptr;

fuzz::System& start() {
    VsComponent* vs = nullptr;
    auto& system = *new fuzz::System([&] {
        auto& components = *hal::ComponentManager::getInstance();
        components.add(sIms = new ImsComponent());
        components.add(sRf = new RfComponent());
        components.add(sVoter = new Voter());
        components.add(vs = new VsComponent());
        components.registeComponentReady(sVoter, new MessageCallback([](const auto&) {}));
    });
    vs->mStateRegistrants->notify(new mindroid::Integer(1));
    system.settle();
    return system;
}

void answer(fuzz::System& system, FuzzedDataProvider& input) {
    sRf->error = input.ConsumeIntegral<int8_t>();
    sRf->value = input.ConsumeIntegral<uint8_t>();
    sRf->data = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 64));
    (void)system.service().getSwtpStatus(1);
    (void)system.service().getNvramData(2, 0, 0);
    sIms->error = static_cast<hal::SUBSYS_Errno>(sRf->error);
    sIms->answer = input.ConsumeBool() ? nullptr : carrierOf<hal::ImsRtpRedunSignalMsgRspInfoType>(input);
    (void)system.service().sendImsRtpRedunSignalMsg(3, {});
}

void changeState(FuzzedDataProvider& input) {
    const int32_t what =
        input.ConsumeBool() ? hal::Component::MSG_PROXY_STATE_CHANGED : input.ConsumeIntegral<int32_t>();
    const int32_t state = input.ConsumeIntegral<int32_t>();
    sVoter->obtainMessage(what, input.ConsumeBool() ? nullptr : new mindroid::Integer(state))->sendToTarget();
}

// Of any type and size.
void reportFromPlugin(FuzzedDataProvider& input) {
    const auto& [context, callback] = test::iccPlugin().registrations.at(ICC_EVENT_STATE_CHANGED);
    const auto type = static_cast<IccEventType>(input.ConsumeIntegral<uint8_t>());
    auto data = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 64));
    callback(type, context, data.data(), static_cast<int>(data.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::System& sSystem = start();
    FuzzedDataProvider input(data, size);
    while (input.remaining_bytes() != 0) {
        const auto event = input.ConsumeIntegralInRange<size_t>(0, STATE);
        if (event < EVENTS) sListeners[event]->notify(input.ConsumeBool() ? nullptr : carrierOf(event, input));
        if (event == ANSWER) answer(sSystem, input);
        if (event == PLUGIN) reportFromPlugin(input);
        if (event == STATE) changeState(input);
    }
    sSystem.settle();
    test::iccPlugin().calls.clear();
    return 0;
}
