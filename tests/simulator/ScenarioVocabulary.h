#pragma once

#include "simulator/Scenario.h"

#include <cstddef>
#include <cstdint>

// A vocabulary with a field, a request and an event of every kind.
namespace test {

struct ScenarioRecord {
    uint8_t small;
    uint16_t pair[2];
    int64_t large;
    uint8_t data[4];
    char text[4];
};
inline constexpr simulator::Field FIELDS[] = {
    SIMULATOR_FIELD(ScenarioRecord, small), SIMULATOR_FIELD(ScenarioRecord, pair),
    SIMULATOR_FIELD(ScenarioRecord, large), SIMULATOR_HEX_FIELD(ScenarioRecord, data),
    SIMULATOR_FIELD(ScenarioRecord, text)};
inline constexpr simulator::RequestKind REQUESTS[] = {
    {"whole", simulator::DELAY | simulator::SILENT | simulator::TWICE | simulator::NULL_OBJECT | simulator::SHORT, 4,
     FIELDS},
    {"byteCode", simulator::DELAY, 1},
    {"plain", 0, 0}};
inline constexpr simulator::EventKind EVENTS[] = {{"record", sizeof(ScenarioRecord), FIELDS}, {"bare", 0, {}}};
inline constexpr simulator::Vocabulary SIZED = {"icc", REQUESTS, EVENTS, true};
inline constexpr simulator::Vocabulary UNSIZED = {"ims", REQUESTS, EVENTS, false};

}  // namespace test
