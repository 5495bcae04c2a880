#include "simulator/Scenario.h"

#include <android/log.h>
#include <device/DevicePath.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>

namespace simulator {

namespace {

constexpr const char* TAG = "Simulator";
constexpr const char* UNKNOWN_SUBJECT = "unknown subject";
constexpr std::array<std::string_view, 3> SUBJECTS = {"icc", "vs", "ims"};
constexpr int64_t MAX_MILLIS = 86'400'000;
constexpr int64_t MAX_COUNT = 100'000;
constexpr int64_t MAX_RECORD = 4096;
constexpr uintmax_t MAX_FILE = 16 << 20;

// The words of a line; a word that starts with '#' ends it.
std::vector<std::string_view> split(std::string_view line) {
    constexpr std::string_view BLANKS = " \t\r\v\f";
    std::vector<std::string_view> words;
    for (size_t end = 0;;) {
        const size_t begin = line.find_first_not_of(BLANKS, end);
        if (begin == std::string_view::npos || line[begin] == '#') return words;
        end = std::min(line.find_first_of(BLANKS, begin), line.size());
        words.push_back(line.substr(begin, end - begin));
    }
}

// Decimal, or hexadecimal after "0x".
bool toNumber(std::string_view text, int64_t min, int64_t max, int64_t& value) {
    const bool isHex = text.starts_with("0x");
    if (isHex) text.remove_prefix(2);
    if (isHex && text.starts_with('-')) return false;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, isHex ? 16 : 10);
    return result.ec == std::errc() && result.ptr == end && value >= min && value <= max;
}

// A number of 1, 2, 4 or 8 bytes, with or without sign, little-endian.
bool appendNumber(std::string_view text, size_t size, std::vector<uint8_t>& bytes) {
    const int bits = static_cast<int>(size) * 8;
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): no field has 0 bytes
    const int64_t min = bits == 64 ? INT64_MIN : -(int64_t{1} << (bits - 1));
    const int64_t max = bits == 64 ? INT64_MAX : (int64_t{1} << bits) - 1;
    int64_t value = 0;
    if (!toNumber(text, min, max, value)) return false;
    for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
    return true;
}

bool toNumbers(std::string_view text, const Field& field, std::vector<uint8_t>& bytes) {
    while (bytes.size() < field.size) {
        const size_t comma = text.find(',');
        if (!appendNumber(text.substr(0, comma), field.element, bytes)) return false;
        if (comma == std::string_view::npos) return true;
        text.remove_prefix(comma + 1);
    }
    return false;
}

bool toBytes(std::string_view text, const Field& field, std::vector<uint8_t>& bytes) {
    if (text.size() % 2 != 0 || text.size() / 2 > field.size) return false;
    for (size_t i = 0; i < text.size(); i += 2) {
        uint8_t byte = 0;
        const char* end = text.data() + i + 2;
        if (std::from_chars(text.data() + i, end, byte, 16).ptr != end) return false;
        bytes.push_back(byte);
    }
    return true;
}

// The whole field may be filled, without a NUL at its end.
bool toText(std::string_view text, const Field& field, std::vector<uint8_t>& bytes) {
    if (text.size() > field.size) return false;
    bytes.assign(text.begin(), text.end());
    bytes.resize(field.size);
    return true;
}

bool toFieldValue(std::string_view text, const Field& field, std::vector<uint8_t>& bytes) {
    switch (field.kind) {
        case Field::NUMBERS:
            return toNumbers(text, field, bytes);
        case Field::HEX:
            return toBytes(text, field, bytes);
        case Field::TEXT:
            return toText(text, field, bytes);
    }
    return false;
}

template <typename Kinds>
auto findByName(const Kinds& kinds, std::string_view name) {
    return std::find_if(kinds.begin(), kinds.end(), [name](const auto& kind) { return kind.name == name; });
}

// What is wrong and the start of the word that is.
std::string describe(std::string_view what, std::string_view word) {
    constexpr size_t SHOWN = 40;
    return std::string(what).append(" '").append(word.substr(0, SHOWN)).append("'");
}

class LineParser {
public:
    LineParser(const std::vector<std::string_view>& words, const Vocabulary& vocabulary)
        : mWords(words), mVocabulary(vocabulary) {}

    bool parse(ScenarioLine& line) {
        if (!parseTrigger(line)) return false;
        if (atEnd()) return fail("nothing to do after", mWords.back());
        if (mWords[mNext] != "event") return parseAnswer(line);
        ++mNext;
        return parseEvent(line.event.emplace());
    }
    [[nodiscard]] const std::string& reason() const { return mReason; }

private:
    [[nodiscard]] bool atEnd() const { return mNext == mWords.size(); }
    std::string_view take() { return atEnd() ? std::string_view() : mWords[mNext++]; }

    bool fail(std::string_view what, std::string_view word) {
        mReason = describe(what, word);
        return false;
    }

    template <typename T>
    bool takeNumber(std::string_view text, int64_t min, int64_t max, T& value) {
        int64_t number = 0;
        if (!toNumber(text, min, max, number)) return fail("bad number", text);
        value = static_cast<std::remove_reference_t<T>>(number);
        return true;
    }

    bool parseTrigger(ScenarioLine& line) {
        const std::string_view word = take();
        if (word == "on") return parseRequest(line);
        if (word != "at" && word != "every") return fail("unknown trigger", word);
        line.trigger = word == "at" ? ScenarioLine::AT : ScenarioLine::EVERY;
        return takeNumber(take(), word == "at" ? 0 : 1, MAX_MILLIS, line.millis);
    }

    bool parseRequest(ScenarioLine& line) {
        const std::string_view name = take();
        const auto found = findByName(mVocabulary.requests, name);
        if (found == mVocabulary.requests.end()) return fail("unknown request", name);
        line.request = static_cast<size_t>(found - mVocabulary.requests.begin());
        const bool isCounted = !atEnd() && mWords[mNext][0] >= '0' && mWords[mNext][0] <= '9';
        return !isCounted || takeNumber(take(), 1, MAX_COUNT, line.nth);
    }

    bool parseEvent(ScenarioEvent& event) {
        const std::string_view name = take();
        const auto found = findByName(mVocabulary.events, name);
        if (found == mVocabulary.events.end()) return fail("unknown event", name);
        event.kind = static_cast<size_t>(found - mVocabulary.events.begin());
        while (!atEnd()) {
            if (!parseEventWord(take(), event)) return false;
        }
        return true;
    }

    bool parseEventWord(std::string_view word, ScenarioEvent& event) {
        if (word == "null") return event.null = true;
        const std::string_view value = word.substr(std::min(word.find('=') + 1, word.size()));
        if (word.starts_with("after=")) return takeNumber(value, 0, MAX_MILLIS, event.afterMillis);
        if (word.starts_with("repeat=")) return takeNumber(value, 1, MAX_COUNT, event.repeat);
        if (word.starts_with("bytes=") && mVocabulary.sizedEvents) {
            return takeNumber(value, 0, MAX_RECORD, event.bytes.emplace());
        }
        return parseField(word, mVocabulary.events[event.kind].fields, event.fields);
    }

    bool parseAnswer(ScenarioLine& line) {
        static const RequestKind NONE{"", 0, 0};
        const bool isRequest = line.trigger == ScenarioLine::ON;
        const RequestKind& request = isRequest ? mVocabulary.requests[line.request] : NONE;
        while (!atEnd()) {
            if (!parseAnswerWord(take(), request, line.answer)) return false;
        }
        return true;
    }

    bool parseAnswerWord(std::string_view word, const RequestKind& request, ScenarioAnswer& answer) {
        const auto allows = [&request](AnswerWord flag) { return (request.words & flag) != 0; };
        if (word == "crash") return answer.crash = true;
        if (word == "silent" && allows(SILENT)) return answer.silent = true;
        if (word == "twice" && allows(TWICE)) return answer.twice = true;
        if (word == "null" && allows(NULL_OBJECT)) return answer.null = true;
        if (word == "delay" && allows(DELAY)) return takeNumber(take(), 0, MAX_MILLIS, answer.delayMillis.emplace());
        if (word == "short" && allows(SHORT)) return takeNumber(take(), 0, MAX_RECORD, answer.shortTo.emplace());
        if (word == "answer" && request.codeSize == 1) return takeNumber(take(), 0, UINT8_MAX, answer.code.emplace());
        if (word == "answer" && request.codeSize == 4) {
            return takeNumber(take(), INT32_MIN, INT32_MAX, answer.code.emplace());
        }
        if (word.find('=') == std::string_view::npos) return fail("this cannot be said here:", word);
        return parseField(word, request.fields, answer.fields);
    }

    bool parseField(std::string_view word, std::span<const Field> fields, std::vector<FieldValue>& values) {
        const size_t equals = word.find('=');
        const auto found = findByName(fields, word.substr(0, equals));
        if (equals == std::string_view::npos || found == fields.end()) return fail("unknown field", word);
        FieldValue& value = values.emplace_back(FieldValue{&*found, {}});
        return toFieldValue(word.substr(equals + 1), *found, value.bytes) || fail("bad value", word);
    }

    const std::vector<std::string_view>& mWords;
    const Vocabulary& mVocabulary;
    size_t mNext = 1;  // the subject was read
    std::string mReason;
};

template <typename T>
void replaceIfSet(std::optional<T>& value, const std::optional<T>& other) {
    if (other) value = other;
}

}  // namespace

void applyFields(const std::vector<FieldValue>& values, void* record) {
    for (const FieldValue& value : values) {
        std::copy(value.bytes.begin(), value.bytes.end(), static_cast<uint8_t*>(record) + value.field->offset);
    }
}

void ScenarioAnswer::merge(const ScenarioAnswer& other) {
    replaceIfSet(code, other.code);
    replaceIfSet(delayMillis, other.delayMillis);
    replaceIfSet(shortTo, other.shortTo);
    fields.insert(fields.end(), other.fields.begin(), other.fields.end());
    silent |= other.silent;
    twice |= other.twice;
    null |= other.null;
    crash |= other.crash;
}

std::vector<ScenarioLine> parseScenario(std::istream& input, const Vocabulary& vocabulary, const BadLine& report) {
    std::vector<ScenarioLine> lines;
    std::string text;
    for (int number = 1; std::getline(input, text); ++number) {
        const auto words = split(text);
        if (words.empty()) continue;
        if (std::find(SUBJECTS.begin(), SUBJECTS.end(), words[0]) == SUBJECTS.end()) {
            report(number, describe(UNKNOWN_SUBJECT, words[0]));
        }
        if (words[0] != vocabulary.subject) continue;
        ScenarioLine line;
        line.number = number;
        LineParser parser(words, vocabulary);
        if (parser.parse(line)) {
            lines.push_back(std::move(line));
        } else {
            report(number, parser.reason());
        }
    }
    return lines;
}

std::vector<ScenarioLine> loadScenario(const Vocabulary& vocabulary) {
    static std::atomic<bool> sIsRead{false};
    const bool isFirst = !sIsRead.exchange(true);
    const std::string path = device::path(SCENARIO_PATH);
    std::error_code error;
    // Anything but a file, such as a pipe, could keep the reader waiting.
    if (!std::filesystem::is_regular_file(path, error)) return {};
    const uintmax_t size = std::filesystem::file_size(path, error);
    std::ifstream file(path);
    if (error || !file || size > MAX_FILE) {
        const char* reason = error || !file ? "can't be opened" : "is longer than 16 MiB";
        __android_log_print(ANDROID_LOG_ERROR, TAG, "scenario is not read: it %s", reason);
        return {};
    }
    return parseScenario(file, vocabulary, [isFirst](int number, const std::string& reason) {
        if (!isFirst && reason.starts_with(UNKNOWN_SUBJECT)) return;
        __android_log_print(ANDROID_LOG_ERROR, TAG, "scenario line %d: %s", number, reason.c_str());
    });
}

}  // namespace simulator
