#include "simulator/SimVsComponent.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <vector>

#include "component/ComponentManager.h"

#include <mindroid/Boxes.h>

using mindroid::Integer;
using mindroid::Message;
using mindroid::Object;
using mindroid::RegistrantList;
using mindroid::sp;

namespace simulator {

namespace {

constexpr int64_t READY_AFTER_MILLIS = 100;

// The records of rf/VsRecords.h as a scenario line fills them.
struct ClatFields {
    uint8_t enable;
    uint16_t freq;
    uint8_t cc;
    uint8_t ant;
};
struct TxSharingFields {
    uint8_t enable;
    uint16_t band[2];
    uint16_t param1[2];
    uint8_t param2[2];
};
struct ScreenFields {
    int32_t on;
};
struct IccEventFields {
    uint32_t event;
    uint16_t length;
    uint8_t data[256];
};
struct RfIccInfoFields {
    uint8_t version = 1;
    uint16_t blacklist = 0;
    uint8_t brindle = 0;
};

enum Request : size_t { START, GET_RF_ICC_INFO };

constexpr Field RF_ICC_INFO_FIELDS[] = {
    SIMULATOR_FIELD(RfIccInfoFields, version),
    SIMULATOR_FIELD(RfIccInfoFields, blacklist),
    SIMULATOR_FIELD(RfIccInfoFields, brindle),
};
constexpr RequestKind REQUESTS[] = {
    {"start", DELAY | SILENT | TWICE, 0},
    {"getRfIccInfo", DELAY | SILENT | TWICE | NULL_OBJECT, 4, RF_ICC_INFO_FIELDS},
};

enum Event : size_t { CLAT, TX_SHARING, SCREEN, ICC_EVENT };

constexpr Field CLAT_FIELDS[] = {
    SIMULATOR_FIELD(ClatFields, enable),
    SIMULATOR_FIELD(ClatFields, freq),
    SIMULATOR_FIELD(ClatFields, cc),
    SIMULATOR_FIELD(ClatFields, ant),
};
constexpr Field TX_SHARING_FIELDS[] = {
    SIMULATOR_FIELD(TxSharingFields, enable),
    SIMULATOR_FIELD(TxSharingFields, band),
    SIMULATOR_FIELD(TxSharingFields, param1),
    SIMULATOR_FIELD(TxSharingFields, param2),
};
constexpr Field SCREEN_FIELDS[] = {
    SIMULATOR_FIELD(ScreenFields, on),
};
constexpr Field ICC_EVENT_FIELDS[] = {
    SIMULATOR_FIELD(IccEventFields, event),
    SIMULATOR_FIELD(IccEventFields, length),
    SIMULATOR_HEX_FIELD(IccEventFields, data),
};
constexpr EventKind EVENTS[] = {
    {"clat", sizeof(ClatFields), CLAT_FIELDS},
    {"txSharing", sizeof(TxSharingFields), TX_SHARING_FIELDS},
    {"screen", sizeof(ScreenFields), SCREEN_FIELDS},
    {"iccEvent", sizeof(IccEventFields), ICC_EVENT_FIELDS},
};
constexpr Vocabulary VOCABULARY = {"vs", REQUESTS, EVENTS, false};

template <typename T>
T recordOf(const ScenarioEvent& event) {
    return withFields(T{}, event.fields);
}

sp<Object> makeRecord(const ScenarioEvent& event) {
    if (event.null) return nullptr;
    if (event.kind == CLAT) {
        const auto clat = recordOf<ClatFields>(event);
        return new hal::VsClatState(clat.enable, clat.freq, clat.cc, clat.ant);
    }
    if (event.kind == TX_SHARING) {
        const auto tx = recordOf<TxSharingFields>(event);
        return new hal::VsTxSharingState(tx.enable, std::to_array(tx.band), std::to_array(tx.param1),
                                         std::to_array(tx.param2));
    }
    if (event.kind == SCREEN) return new Integer(recordOf<ScreenFields>(event).on);
    const auto icc = recordOf<IccEventFields>(event);
    const size_t length = std::min<size_t>(icc.length, std::size(icc.data));
    return new hal::VsIccEvent(icc.event, std::vector<uint8_t>(icc.data, icc.data + length));
}

sp<Object> makeRfIccInfo(const ScenarioAnswer& answer) {
    const auto info = withFields(RfIccInfoFields{}, answer.fields);
    return new hal::VsRfIccInfo(info.version, info.blacklist, info.brindle);
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
    lists[event.kind]->notify(makeRecord(event));
}

}  // namespace simulator
