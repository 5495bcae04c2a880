#include "tools/TraceVerbs.h"

#include "tools/Json.h"
#include "tools/Session.h"
#include "tools/TraceEvents.h"
#include "tools/TraceRequests.h"

#include <device/RuntimeFolder.h>

#include <time.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>
#include <utility>
#include <vector>

namespace subsysctl {

namespace {

using device::MarkKind;
using device::Trace;
using device::TraceMark;

constexpr const char* DAEMON = "subsysd";

int64_t monotonicNanos() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// The traces of a program, or of all. Without one, why, and nothing.
std::vector<Trace> readOrExplain(bool last, const std::string& program, std::ostream& err) {
    std::vector<std::string> problems;
    auto traces = device::readTraces(last, program, problems);
    for (const std::string& problem : problems) err << "subsysctl: " << problem << std::endl;
    if (!traces.empty()) return traces;
    err << "subsysctl: no recording" << (last ? " of a last run" : "") << (program.empty() ? "" : " of " + program)
        << " in " << device::runtimeFolder() << std::endl;
    return {};
}

void eraseBefore(int64_t time, std::vector<Trace>& traces) {
    const auto isEarlier = [time](const TraceMark& mark) { return mark.time < time; };
    for (Trace& trace : traces) {
        std::erase_if(trace.marks, isEarlier);
        std::erase_if(trace.open, isEarlier);
    }
}

void summarize(const std::vector<Trace>& traces, std::ostream& err) {
    size_t marks = 0;
    uint64_t lost = 0;
    for (const Trace& trace : traces) {
        marks += trace.marks.size();
        lost += trace.lostMarks;
    }
    err << "subsysctl: " << marks << " marks of " << traces.size() << (traces.size() == 1 ? " process" : " processes")
        << (lost == 0 ? "" : ", " + std::to_string(lost) + " lost") << std::endl;
}

bool write(const std::vector<Trace>& traces, const std::string& file, std::ostream& out) {
    if (file.empty()) {
        writeTraceEvents(out, traces);
        return out.good();
    }
    std::ofstream stream(file);
    writeTraceEvents(stream, traces);
    return stream.flush().good();
}

// Those that run or, when none does, the one that ran last.
void keepCurrent(std::vector<Trace>& traces) {
    if (std::any_of(traces.begin(), traces.end(), [](const Trace& trace) { return trace.isAlive; })) {
        std::erase_if(traces, [](const Trace& trace) { return !trace.isAlive; });
    } else if (!traces.empty()) {
        traces = {*std::max_element(traces.begin(), traces.end(),
                                    [](const Trace& a, const Trace& b) { return a.startTime < b.startTime; })};
    }
}

std::string wallClock(const Trace& trace, int64_t time) {
    const int64_t nanos = trace.startWallTime + (time - trace.startTime);
    const time_t seconds = nanos / 1'000'000'000;
    tm parts{};
    std::array<char, 32> text{};
    if (localtime_r(&seconds, &parts) != nullptr) strftime(text.data(), text.size(), "%F %T", &parts);
    std::array<char, 8> millis{};
    std::snprintf(millis.data(), millis.size(), ".%03d", static_cast<int>(std::abs(nanos / 1'000'000 % 1'000)));
    return std::string(text.data()) + millis.data();
}

// Columns as wide as their widest text.
class Table {
public:
    explicit Table(std::vector<std::string> titles) { add(std::move(titles)); }
    void add(std::vector<std::string> row) {
        mWidths.resize(std::max(mWidths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) mWidths[i] = std::max(mWidths[i], row[i].size());
        mRows.push_back(std::move(row));
    }
    [[nodiscard]] bool isEmpty() const { return mRows.size() == 1; }
    void print(std::ostream& out) const {
        for (const auto& row : mRows) {
            for (size_t i = 0; i + 1 < row.size(); ++i)
                out << row[i] << std::string(mWidths[i] + 2 - row[i].size(), ' ');
            out << row.back() << "\n";
        }
    }

private:
    std::vector<std::vector<std::string>> mRows;
    std::vector<size_t> mWidths;
};

int64_t lengthOf(const TraceSection& section, int64_t now) {
    return std::max<int64_t>(0, (section.end ? section.end->time : now) - section.begin.time);
}

std::string whereText(const TracedRequest& request, int64_t now) {
    const TraceSection* stage = request.where();
    return stage == nullptr ? "-" : stage->name + " for " + durationText(lengthOf(*stage, now));
}

std::string stagesText(const TracedRequest& request, int64_t now) {
    std::string text;
    for (const TraceSection& stage : request.stages) {
        text += (text.empty() ? "" : ", ") + stage.name + " " + durationText(lengthOf(stage, now));
    }
    return text.empty() ? "-" : text;
}

// The requests that wait, or those that were answered.
Table requestTable(const Trace& trace, const std::vector<TracedRequest>& requests, int64_t now, bool answered) {
    Table table({"REQUEST", "SERIAL", "ARRIVED", answered ? "TOOK" : "AGE", answered ? "STAGES" : "WHERE"});
    for (const TracedRequest& request : requests) {
        const TraceSection& section = request.section;
        if (section.end.has_value() != answered) continue;
        table.add({request.operation, std::to_string(request.number), wallClock(trace, section.begin.time),
                   durationText(lengthOf(section, now)),
                   answered ? stagesText(request, now) : whereText(request, now)});
    }
    return table;
}

// What threads are inside of, the innermost section of a thread last.
Table threadTable(const Trace& trace, int64_t now) {
    Table table({"THREAD", "FOR", "INSIDE"});
    for (const TraceMark& mark : trace.open) {
        if (mark.kind != MarkKind::BEGIN) continue;
        const auto name = trace.threadNames.find(mark.thread);
        const std::string number = std::to_string(mark.thread);
        table.add({name == trace.threadNames.end() ? number : name->second + " (" + number + ")",
                   durationText(std::max<int64_t>(0, now - mark.time)), mark.name});
    }
    return table;
}

double seconds(int64_t nanos) {
    return static_cast<double>(nanos) / 1e9;
}

Json requestJson(const Trace& trace, const TracedRequest& request, int64_t now) {
    Json stages = Json::array();
    for (const TraceSection& stage : request.stages) {
        stages.push_back({{"stage", stage.name}, {"seconds", seconds(lengthOf(stage, now))}, {"open", !stage.end}});
    }
    const TraceSection* where = request.where();
    return {{"request", request.operation},
            {"serial", request.number},
            {"state", request.section.end ? "answered" : "waiting"},
            {"program", trace.program},
            {"pid", trace.pid},
            {"arrived", wallClock(trace, request.section.begin.time)},
            {"seconds", seconds(lengthOf(request.section, now))},
            {"where", where == nullptr ? Json() : Json(where->name)},
            {"stages", std::move(stages)}};
}

void printJson(const Trace& trace, const std::vector<TracedRequest>& requests, int64_t now, bool all,
               std::ostream& out) {
    for (const TracedRequest& request : requests) {
        if (all || !request.section.end) out << dump(requestJson(trace, request, now)) << "\n";
    }
}

void printUnless(bool isEmpty, const char* title, const Table& table, std::ostream& out) {
    if (isEmpty) return;
    out << title;
    table.print(out);
}

}  // namespace

int trace(const TraceOptions& options, std::ostream& out, std::ostream& err) {
    const int64_t start = monotonicNanos();
    if (options.seconds) std::this_thread::sleep_for(std::chrono::duration<double>(*options.seconds));
    auto traces = readOrExplain(options.last, "", err);
    if (traces.empty()) return NO_SERVICE;
    if (options.seconds) eraseBefore(start, traces);
    if (!write(traces, options.output, out)) {
        err << "subsysctl: trace: the output could not be written" << std::endl;
        return ANSWERED_WITH_ERROR;
    }
    summarize(traces, err);
    return OK;
}

std::vector<Trace> daemonTraces(std::ostream& err) {
    auto traces = readOrExplain(false, DAEMON, err);
    keepCurrent(traces);
    return traces;
}

int64_t nowOf(const Trace& trace) {
    if (trace.isAlive) return monotonicNanos();
    return trace.marks.empty() ? trace.startTime : trace.marks.back().time;
}

int requests(const RequestsOptions& options, std::ostream& out, std::ostream& err) {
    const auto traces = daemonTraces(err);
    if (traces.empty()) return NO_SERVICE;
    for (const Trace& trace : traces) printRequests(trace, nowOf(trace), options, out);
    return OK;
}

void printRequests(const Trace& trace, int64_t now, const RequestsOptions& options, std::ostream& out) {
    const auto requests = tracedSections(trace).requests;
    if (options.json) return printJson(trace, requests, now, options.all, out);
    const Table waiting = requestTable(trace, requests, now, false);
    const Table answered = requestTable(trace, requests, now, true);
    const Table threads = threadTable(trace, now);
    out << trace.program << ", pid " << trace.pid << (trace.isAlive ? "" : ", which has ended")
        << (waiting.isEmpty() ? ": no request waits\n" : ": waiting requests, oldest first\n");
    printUnless(waiting.isEmpty(), "", waiting, out);
    if (trace.unplaced > 0) out << "and " << trace.unplaced << " more sections, for which there was no place\n";
    printUnless(threads.isEmpty(), "\nthreads that are inside a section\n", threads, out);
    printUnless(!options.all || answered.isEmpty(), "\nanswered, as far back as the recording goes\n", answered, out);
}

}  // namespace subsysctl
