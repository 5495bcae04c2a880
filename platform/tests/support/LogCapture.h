#pragma once

#include "tests/support/Await.h"

#include <android/log.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace test {

struct LogLine {
    int priority;
    std::string tag;
    std::string text;

    bool operator==(const LogLine&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const LogLine& line) {
        return out << line.priority << ' ' << line.tag << ": " << line.text;
    }
};

// Takes the log of the process for as long as it lives, one at a time, and keeps every line.
class LogCapture {
public:
    // The action runs with each line, on the thread that logs it.
    explicit LogCapture(std::function<void(const std::string&)> onLine = [](const std::string&) {}) {
        store().clear();
        action() = std::move(onLine);
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        __android_log_set_logger(&LogCapture::write);
    }
    ~LogCapture() { __android_log_set_logger(&__android_log_stderr_logger); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    [[nodiscard]] std::vector<LogLine> lines() const { return store().all(); }
    // The lines of one tag, in order.
    [[nodiscard]] std::vector<LogLine> lines(std::string_view tag) const {
        std::vector<LogLine> all = lines();
        std::erase_if(all, [&](const LogLine& line) { return line.tag != tag; });
        return all;
    }
    [[nodiscard]] std::vector<std::string> texts(std::string_view tag) const {
        std::vector<std::string> result;
        for (const LogLine& line : lines(tag)) result.push_back(line.text);
        return result;
    }
    [[nodiscard]] size_t count(std::string_view tag, std::string_view text, std::optional<int> priority = {}) const {
        return countIn(store().all(), tag, text, priority);
    }
    [[nodiscard]] bool has(std::string_view tag, std::string_view text, std::optional<int> priority = {}) const {
        return count(tag, text, priority) > 0;
    }
    // True once the line has come `times` times, false when it has not by the deadline.
    [[nodiscard]] bool await(std::string_view tag, std::string_view text, size_t times = 1) const {
        return store().awaitThat([&](const auto& all) { return countIn(all, tag, text, {}) >= times; });
    }
    void clear() { store().clear(); }

private:
    using Store = Recorder<LogLine>;

    // Never destroyed: a thread may log while the process ends.
    static Store& store() {
        static Store& sStore = *new Store();
        return sStore;
    }
    static std::function<void(const std::string&)>& action() {
        static auto& sAction = *new std::function<void(const std::string&)>();
        return sAction;
    }
    static void write(const __android_logger_data* data, const char* text) {
        store().add({data->priority, data->tag == nullptr ? "" : data->tag, text});
        action()(text);
    }
    static size_t countIn(const std::vector<LogLine>& all, std::string_view tag, std::string_view text,
                          std::optional<int> priority) {
        return static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const LogLine& line) {
            return line.tag == tag && line.text == text && (!priority || line.priority == *priority);
        }));
    }
};

}  // namespace test
