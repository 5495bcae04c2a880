#include "simulator/SimVsComponent.h"

#include "component/ComponentManager.h"

#include <mindroid/Boxes.h>

#include <algorithm>
#include <cstddef>

using mindroid::Integer;
using mindroid::Message;
using mindroid::Object;
using mindroid::RegistrantList;
using mindroid::sp;

namespace simulator {

namespace {

constexpr int64_t READY_AFTER_MILLIS = 100;

struct ScreenFields {
    int32_t on;
};
using IccEvent = hal::VsIccEvent<256>;

enum Request : size_t { START, GET_RF_ICC_INFO };

constexpr Field RF_ICC_INFO_FIELDS[] = {
    SIMULATOR_FIELD(hal::VsRfIccInfo, version),
    SIMULATOR_FIELD(hal::VsRfIccInfo, blacklist),
    SIMULATOR_FIELD(hal::VsRfIccInfo, brindle),
};
constexpr RequestKind REQUESTS[] = {
    {"start", DELAY | SILENT | TWICE, 0},
    {"getRfIccInfo", DELAY | SILENT | TWICE | NULL_OBJECT, 4, RF_ICC_INFO_FIELDS},
};

enum Event : size_t { CLAT, TX_SHARING, SCREEN, ICC_EVENT };

constexpr Field CLAT_FIELDS[] = {
    SIMULATOR_FIELD(hal::VsClatState, enable),
    SIMULATOR_FIELD(hal::VsClatState, freq),
    SIMULATOR_FIELD(hal::VsClatState, cc),
    SIMULATOR_FIELD(hal::VsClatState, ant),
};
constexpr Field TX_SHARING_FIELDS[] = {
    SIMULATOR_FIELD(hal::VsTxSharingState, enable),
    SIMULATOR_FIELD(hal::VsTxSharingState, band),
    SIMULATOR_FIELD(hal::VsTxSharingState, param1),
    SIMULATOR_FIELD(hal::VsTxSharingState, param2),
};
constexpr Field SCREEN_FIELDS[] = {
    SIMULATOR_FIELD(ScreenFields, on),
};
constexpr Field ICC_EVENT_FIELDS[] = {
    SIMULATOR_FIELD(IccEvent, event),
    SIMULATOR_FIELD(IccEvent, length),
    SIMULATOR_HEX_FIELD(IccEvent, data),
};
constexpr EventKind EVENTS[] = {
    {"clat", sizeof(hal::VsClatState), CLAT_FIELDS},
    {"txSharing", sizeof(hal::VsTxSharingState), TX_SHARING_FIELDS},
    {"screen", sizeof(ScreenFields), SCREEN_FIELDS},
    {"iccEvent", sizeof(IccEvent), ICC_EVENT_FIELDS},
};
constexpr Vocabulary VOCABULARY = {"vs", REQUESTS, EVENTS, false};

template <typename Record>
sp<Object> carrierOf(const Record& record) {
    return new hal::SubsysInterfaceData<Record>(record);
}

sp<Object> iccEventCarrier(IccEvent event) {
    event.length = std::min<uint16_t>(event.length, sizeof(event.data));
    return carrierOf(event);
}

sp<Object> makeCarrier(const ScenarioEvent& event) {
    if (event.null) return nullptr;
    switch (event.kind) {
        case CLAT:
            return carrierOf(withFields(hal::VsClatState{}, event.fields));
        case TX_SHARING:
            return carrierOf(withFields(hal::VsTxSharingState{}, event.fields));
        case SCREEN:
            return new Integer(withFields(ScreenFields{}, event.fields).on);
        default:
            return iccEventCarrier(withFields(IccEvent{}, event.fields));
    }
}

sp<Object> makeRfIccInfo(const ScenarioAnswer& answer) {
    return carrierOf(withFields(hal::VsRfIccInfo{1, 0, 0}, answer.fields));
}

// Whoever loads this library adds the component by that, on a thread that has a looper.
[[maybe_unused]] const bool sIsAdded = [] {
    hal::ComponentManager::getInstance()->add(new SimVsComponent());
    return true;
}();

}  // namespace

SimVsComponent::SimVsComponent()
    : mPlayer("SimVsComponent", VOCABULARY, *this, [this](const ScenarioEvent& event) { deliver(event); }) {}

void SimVsComponent::init(int32_t instanceId) {
    VsComponent::init(instanceId);
    mPlayer.start();
    becomeReady();
}

void SimVsComponent::becomeReady() {
    const Reaction reaction = mPlayer.react(START);
    mPlayer.post(reaction.answer.delayMillis.value_or(READY_AFTER_MILLIS), [this, reaction] {
        const sp<Object> isReady = new Integer(1);
        if (!reaction.answer.silent) mStateRegistrants->notify(isReady);
        if (!reaction.answer.silent && reaction.answer.twice) mStateRegistrants->notify(isReady);
        mPlayer.play(reaction);
    });
}

void SimVsComponent::getRfIccInfo(const sp<Message>& message) {
    mPlayer.serve(GET_RF_ICC_INFO, message, nullptr, makeRfIccInfo);
}

void SimVsComponent::deliver(const ScenarioEvent& event) {
    const sp<RegistrantList> lists[] = {mClatRegistrants, mTxSharingRegistrants, mScreenStateRegistrants,
                                        mIccEventRegistrants};
    lists[event.kind]->notify(makeCarrier(event));
}

}  // namespace simulator
