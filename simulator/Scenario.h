#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace simulator {

// One field of a plain record that a scenario line may set by name.
struct Field {
    enum Kind { NUMBERS, HEX, TEXT };

    std::string_view name;
    Kind kind;
    size_t offset;
    size_t size;     // of the whole field, in bytes
    size_t element;  // of one number, in bytes
};

// The field of the same name: numbers, or text where it is an array of char.
#define SIMULATOR_FIELD(record, member) \
    simulator::makeField<decltype(record::member)>(#member, offsetof(record, member))
// Bytes, written as hexadecimal digits.
#define SIMULATOR_HEX_FIELD(record, member)                                                 \
    simulator::Field {                                                                      \
#member, simulator::Field::HEX, offsetof(record, member), sizeof(record::member), 1 \
    }

template <typename T>
constexpr Field makeField(std::string_view name, size_t offset) {
    using Element = std::remove_all_extents_t<T>;
    constexpr auto kind = std::is_array_v<T> && std::is_same_v<Element, char> ? Field::TEXT : Field::NUMBERS;
    return {name, kind, offset, sizeof(T), sizeof(Element)};
}

// An event that a simulated part can deliver: its record and the fields that a line may set.
struct EventKind {
    const char* name;
    size_t recordSize;
    std::span<const Field> fields;
};

// What a line may say about the answer to a request, beside its code and its fields. A crash is always possible.
enum AnswerWord : unsigned { DELAY = 1, SILENT = 2, TWICE = 4, NULL_OBJECT = 8, SHORT = 16 };

struct RequestKind {
    const char* name;
    unsigned words;
    size_t codeSize;  // bytes of the code; 0: this answer has none
    std::span<const Field> fields = {};
};

// The lines that one simulated part understands.
struct Vocabulary {
    const char* subject;
    std::span<const RequestKind> requests;
    std::span<const EventKind> events;
    bool sizedEvents;  // `bytes=N` makes its records longer or shorter
};

// A field and the bytes that a line gives it; never more bytes than the field has.
struct FieldValue {
    const Field* field;
    std::vector<uint8_t> bytes;
};

// Writes the values over the record, which has room for every field of its kind.
void applyFields(const std::vector<FieldValue>& values, void* record);

template <typename T>
[[nodiscard]] T withFields(T record, const std::vector<FieldValue>& values) {
    applyFields(values, &record);
    return record;
}

struct ScenarioEvent {
    size_t kind = 0;  // index into Vocabulary::events
    std::vector<FieldValue> fields;
    int64_t afterMillis = 0;
    int64_t repeat = 1;
    std::optional<size_t> bytes;
    bool null = false;
};

struct ScenarioAnswer {
    std::optional<int64_t> code;
    std::optional<int64_t> delayMillis;
    std::optional<size_t> shortTo;
    std::vector<FieldValue> fields;
    bool silent = false;
    bool twice = false;
    bool null = false;
    bool crash = false;

    // What the other sets wins.
    void merge(const ScenarioAnswer& other);
};

struct ScenarioLine {
    enum Trigger { AT, EVERY, ON };

    int number = 0;
    Trigger trigger = ON;
    int64_t millis = 0;  // AT, EVERY
    size_t request = 0;  // ON: index into Vocabulary::requests
    int64_t nth = 0;     // ON: counted from 1; 0: every time
    std::optional<ScenarioEvent> event;
    ScenarioAnswer answer;
};

// Reads the lines of the vocabulary's subject; those of the other subjects are left to them. A bad line is reported
// with its number and skipped. Any content is safe. The language is described in docs/simulator.md.
using BadLine = std::function<void(int number, const std::string& reason)>;
[[nodiscard]] std::vector<ScenarioLine> parseScenario(std::istream& input, const Vocabulary& vocabulary,
                                                      const BadLine& report);

// The same for the device's file SCENARIO_PATH, with bad lines reported as error lines of the log. No file, no lines.
// A line of no known subject is reported by the first part of the process that reads the file.
inline constexpr std::string_view SCENARIO_PATH = "/simulator/scenario";
[[nodiscard]] std::vector<ScenarioLine> loadScenario(const Vocabulary& vocabulary);

}  // namespace simulator
