#include "rf/IccConversions.h"

#include <mindroid/Log.h>

#include <cstddef>
#include <span>

using ::mindroid::Log;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

namespace {

constexpr const char* TAG = "RfSubsysService";

// A count that a record gives, limited to what the record can hold.
size_t boundedCount(const char* what, int64_t count, size_t capacity) {
    if (count >= 0 && count <= static_cast<int64_t>(capacity)) return static_cast<size_t>(count);
    const size_t bounded = count < 0 ? 0 : capacity;
    Log::e(TAG, "%s count %lld out of range, taken as %zu", what, static_cast<long long>(count), bounded);
    return bounded;
}

// Entry i of the types and of the values stands at i * stride.
IccStateInfo toStateInfo(const IccStateInfoType& record, size_t stride, const uint8_t* types, const uint8_t* values) {
    const size_t count = boundedCount("mode", record.modeNum, ICC_MAX_MODES);
    IccStateInfo info;
    info.state = static_cast<int8_t>(record.iccState);
    info.bypass = static_cast<int8_t>(record.bypass);
    info.modeNum = static_cast<int8_t>(count);  // clients go by it through the entries
    for (size_t i = 0; i < count; ++i) {
        info.modeTypes.push_back(types[i * stride]);
        info.modeValues.push_back(values[i * stride]);
    }
    return info;
}

}  // namespace

IccStateInfo fromStateEvent(const IccStateInfoType& record) {
    return toStateInfo(record, 2, record.modes, record.modes + 1);
}
IccStateInfo fromStateAnswer(const IccStateInfoType& record) {
    return toStateInfo(record, 1, record.modes, record.modes + ICC_MAX_MODES);
}

IccPerceptionInfo fromPerception(const IccPercStateType& record) {
    // The plugin's count is unsigned, the listeners' signed: a count above INT32_MAX is none.
    const size_t count = boundedCount("perception", static_cast<int32_t>(record.size), ICC_MAX_PERC_ENTRIES);
    IccPerceptionInfo info;
    for (const auto& entry : std::span(record.entries, count)) {
        IccPercType type;
        type.value0 = static_cast<int8_t>(entry.value0);
        type.value1 = static_cast<int8_t>(entry.value1);
        type.value2 = static_cast<int8_t>(entry.value2);
        info.percTypes.push_back(type);
    }
    return info;
}

IccIndInfo fromInformation(const IccIndInfoType& record) {
    IccIndInfo info;
    info.id = static_cast<int32_t>(record.type);
    info.data.assign(record.data, record.data + boundedCount("information byte", record.length, ICC_INFO_CAPACITY));
    return info;
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
