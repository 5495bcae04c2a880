#include "compliance/PluginEvents.h"

#include <cstdint>
#include <cstring>

namespace compliance {

namespace {

struct Record {
    const char* name;
    size_t size;
};
// Entry i is event type i + 1.
constexpr Record RECORDS[] = {
    {"ICC_EVENT_STATE_CHANGED", sizeof(IccStateInfoType)},  {"ICC_EVENT_CLAT_STATE", sizeof(IccAclStatusRspMsgType)},
    {"ICC_EVENT_DEVICE_ERR", sizeof(IccDeviceErrType)},     {"ICC_EVENT_PERC_CHANGED", sizeof(IccPercStateType)},
    {"ICC_EVENT_COEX_ANT_CHANGED", sizeof(IccCoexAntType)},
};
static_assert(std::size(RECORDS) == PluginEvents::TYPES);

template <typename T>
T recordIn(const std::vector<uint8_t>& bytes) {
    T record;
    std::memcpy(&record, bytes.data(), sizeof(record));
    return record;
}

Verdict countVerdict(const char* count, size_t value, size_t max) {
    if (value <= max) return ok();
    return failed(std::string(count) + " of at most " + std::to_string(max), std::to_string(value));
}

// Of an event that is as large as its record.
Verdict checkCounts(IccEventType type, const std::vector<uint8_t>& bytes) {
    if (type == ICC_EVENT_STATE_CHANGED) {
        return countVerdict("modeNum", recordIn<IccStateInfoType>(bytes).modeNum, ICC_MAX_MODES);
    }
    if (type == ICC_EVENT_PERC_CHANGED) {
        return countVerdict("size", recordIn<IccPercStateType>(bytes).size, ICC_MAX_PERC_ENTRIES);
    }
    return ok();
}

Verdict checkEvent(IccEventType type, bool isContext, const void* data, int size) {
    const Record& record = RECORDS[type - 1];
    if (!isContext) return failed("the context that was registered for the type", "another one");
    if (data == nullptr) return failed("a record", "an event without data");
    if (size < static_cast<int>(record.size)) {
        return failed("at least the " + std::to_string(record.size) + " bytes of the record", std::to_string(size));
    }
    // All bytes are read, as the service does.
    const auto* bytes = static_cast<const uint8_t*>(data);
    return checkCounts(type, {bytes, bytes + size});
}

}  // namespace

PluginEvents& PluginEvents::get() {
    static auto& sEvents = *new PluginEvents();
    return sEvents;
}

const char* PluginEvents::nameOf(IccEventType type) {
    return RECORDS[type - 1].name;
}

void PluginEvents::onEvent(IccEventType type, void* context, void* data, int size) {
    get().take(type, context, data, size);
}

void PluginEvents::take(IccEventType type, const void* context, const void* data, int size) {
    const bool isKnown = type >= 1 && type <= TYPES;
    const Verdict verdict = isKnown ? checkEvent(type, context == contextOf(type), data, size) : Verdict{};
    const std::lock_guard lock(mMutex);
    if (!isKnown) {
        mOthers = "type " + std::to_string(type);
        return;
    }
    Kind& kind = mKinds[type - 1];
    ++kind.count;
    if (mInCall) ++kind.duringCalls;
    if (kind.fault.kind == Verdict::OK) kind.fault = verdict;
}

Verdict PluginEvents::verdict(IccEventType type) const {
    const std::lock_guard lock(mMutex);
    const Kind& kind = mKinds.at(type - 1);
    if (kind.count == 0) return notChecked("none came");
    if (kind.fault.kind != Verdict::OK) return kind.fault;
    return ok(std::to_string(kind.count) + " came, " + std::to_string(kind.duringCalls) + " of them during a call");
}

Verdict PluginEvents::othersVerdict() const {
    const std::lock_guard lock(mMutex);
    return mOthers.empty() ? ok() : failed("events of the types 1 to 5", mOthers);
}

}  // namespace compliance
