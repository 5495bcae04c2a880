#include "rf/IccEvents.h"

#include "component/SubsysInterfaceData.h"
#include "rf/IccEvent.h"
#include "rf/IccProxy.h"

#include <mindroid/Log.h>

#include <algorithm>
#include <array>
#include <cstring>

using mindroid::Handler;
using mindroid::Log;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
using mindroid::sp;

namespace hal {

namespace {

constexpr const char* TAG = IccProxy::TAG;

template <typename Record>
void notifyRecord(const RegistrantList& listeners, const Record& record) {
    listeners.notify(new SubsysInterfaceData<Record>(record));
}

}  // namespace

// One kind of event: who listens to it, and who tells them.
struct IccEvents::Kind {
    IccEventType type;
    const char* registration;
    const sp<RegistrantList> IccEvents::*listeners;
    void (IccEvents::*handle)(const sp<Message>& message);
};

const IccEvents::Kind* IccEvents::findKind(uint32_t type) {
    static constexpr std::array<Kind, 5> KINDS = {{
        {ICC_EVENT_STATE_CHANGED, "registerIccStateInd", &IccEvents::mIccStateRegistrants,
         &IccEvents::handleIccStateChangedInd},
        {ICC_EVENT_CLAT_STATE, "registerIccClatInfoInd", &IccEvents::mIccClatInfoRegistrants,
         &IccEvents::handleClatStateInd},
        {ICC_EVENT_DEVICE_ERR, "registerIccDeviceErrInd", &IccEvents::mIccDeviceErrRegistrants,
         &IccEvents::handleDeviceErrInd},
        {ICC_EVENT_PERC_CHANGED, "registerIccPercChangeInd", &IccEvents::mIccPercChangeRegistrants,
         &IccEvents::handleIccPercChangedInd},
        {ICC_EVENT_COEX_ANT_CHANGED, "registerIccInfoChangedInd", &IccEvents::mIccInfoChangedRegistrants,
         &IccEvents::handleIccCoexAntChangedInd},
    }};
    const auto kind = std::find_if(KINDS.begin(), KINDS.end(), [&](const Kind& k) { return k.type == type; });
    return kind == KINDS.end() ? nullptr : &*kind;
}

void IccEvents::add(IccEventType type, const sp<Handler>& handler, const sp<MessageCallback>& callback,
                    const sp<Object>& obj) {
    const Kind& kind = *findKind(type);
    RegistrantList& listeners = *(this->*kind.listeners);
    Log::d(TAG, "%s cnt %d", kind.registration, static_cast<int>(listeners.size()));
    listeners.remove(handler);
    listeners.add(new Registrant(handler, callback, obj));
}

void IccEvents::handleMessage(const sp<Message>& message) {
    Log::d(TAG, "handleMessage %d", message->what);
    if (const Kind* kind = findKind(static_cast<uint32_t>(message->what) - MESSAGE_BASE)) {
        (this->*kind->handle)(message);
    } else {
        Log::e(TAG, "invalid msg what = %d", message->what);
    }
}

// The record at the start of an event's data. A shorter event is dropped: reading it would go out of bounds.
template <typename Record>
std::optional<Record> IccEvents::readEvent(const sp<Message>& message) {
    const auto* event = static_cast<const IccEvent*>(message->obj.get());
    if (event == nullptr) return std::nullopt;
    if (event->data.size() < sizeof(Record)) {
        Log::e(TAG, "event %d dropped: %zu bytes of data, %zu wanted", static_cast<int>(event->type),
               event->data.size(), sizeof(Record));
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, event->data.data(), sizeof(record));
    return record;
}

void IccEvents::handleIccStateChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccStateInfoType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccStateChangedInd iccState %d, bypass %d", static_cast<int>(record->iccState), record->bypass);
    notifyRecord(*mIccStateRegistrants, *record);
}

void IccEvents::handleClatStateInd(const sp<Message>& message) {
    const auto record = readEvent<IccAclStatusRspMsgType>(message);
    if (!record) return;
    Log::d(TAG, "handleClatStateInd freq %d ant %d ui %d gamma%d", record->freq, record->ant, record->ui,
           record->gamma);
    notifyRecord(*mIccClatInfoRegistrants, *record);
}

void IccEvents::handleDeviceErrInd(const sp<Message>& message) {
    const auto record = readEvent<IccDeviceErrType>(message);
    if (!record) return;
    Log::d(TAG, "handleDeviceErrInd dev num %d id %d err %d", record->devNum, record->id, record->err);
    notifyRecord(*mIccDeviceErrRegistrants, *record);
}

void IccEvents::handleIccPercChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccPercStateType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccPercChangedInd size %d", static_cast<int>(record->size));
    notifyRecord(*mIccPercChangeRegistrants, *record);
}

void IccEvents::handleIccCoexAntChangedInd(const sp<Message>& message) {
    const auto record = readEvent<IccCoexAntType>(message);
    if (!record) return;
    Log::d(TAG, "handleIccCoexAntChangedInd tech %d chain %d state %d config %d", record->tech, record->chain,
           record->state, record->config);
    IccIndInfoType info = {};
    info.type = ICC_EVENT_COEX_ANT_CHANGED;
    std::memcpy(info.data, &*record, sizeof(*record));
    info.length = sizeof(*record);
    notifyRecord(*mIccInfoChangedRegistrants, info);
}

}  // namespace hal
