#include "tools/TraceVerbs.h"

#include "tools/ExitCode.h"
#include "tools/Json.h"
#include "tools/Table.h"
#include "tools/Text.h"
#include "tools/TraceEvents.h"
#include "tools/TraceRequests.h"

#include <device/RuntimeFolder.h>

#include <time.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
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
std::vector<Trace> readOrExplain(const char* verb, bool last, const std::string& program, Output& output) {
    std::vector<std::string> problems;
    auto traces = device::readTraces(last, program, problems);
    for (const std::string& problem : problems) {
        output.report({{"note", "unreadable"}, {"verb", verb}, {"message", problem}});
    }
    if (traces.empty()) {
        output.report(errorJson("noRecording", verb,
                                std::string("no recording") + (last ? " of a last run" : "") +
                                    (program.empty() ? "" : " of " + program) + " in " + device::runtimeFolder()));
    }
    return traces;
}

void eraseBefore(int64_t time, std::vector<Trace>& traces) {
    const auto isEarlier = [time](const TraceMark& mark) { return mark.time < time; };
    for (Trace& trace : traces) {
        std::erase_if(trace.marks, isEarlier);
        std::erase_if(trace.open, isEarlier);
    }
}

void summarize(const std::vector<Trace>& traces, const std::string& file, Output& output) {
    size_t marks = 0;
    uint64_t lost = 0;
    for (const Trace& trace : traces) {
        marks += trace.marks.size();
        lost += trace.lostMarks;
    }
    const std::string message = std::to_string(marks) + " marks of " + std::to_string(traces.size()) +
                                (traces.size() == 1 ? " process" : " processes") +
                                (lost == 0 ? "" : ", " + std::to_string(lost) + " lost");
    Json summary = {{"trace", file}, {"marks", marks}, {"processes", traces.size()}, {"lost", lost}};
    summary["message"] = message;
    // The output is the trace itself where there is no file.
    if (!file.empty() || !output.style().json) output.report(summary);
}

// Sleeps, and shows how far it is.
void waitFor(double seconds, Output& output) {
    using Seconds = std::chrono::duration<double>;
    for (Seconds left(seconds); left > Seconds(0); left -= Seconds(1)) {
        output.progress("trace: " + std::to_string(std::lround(left.count())) + " s to go");
        std::this_thread::sleep_for(std::min(left, Seconds(1)));
    }
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

// Those that run or, when none does, the first: "subsysd@2" is a daemon that was refused while that one served.
void keepCurrent(std::vector<Trace>& traces) {
    if (std::any_of(traces.begin(), traces.end(), [](const Trace& trace) { return trace.isAlive; })) {
        std::erase_if(traces, [](const Trace& trace) { return !trace.isAlive; });
    } else if (!traces.empty()) {
        traces.resize(1);
    }
}

int64_t wallNanos(const Trace& trace, int64_t time) {
    return trace.startWallTime + (time - trace.startTime);
}

// For a person, in the local time.
std::string wallClock(const Trace& trace, int64_t time) {
    const int64_t nanos = wallNanos(trace, time);
    const time_t seconds = nanos / 1'000'000'000;
    tm parts{};
    std::array<char, 32> text{};
    if (localtime_r(&seconds, &parts) != nullptr) strftime(text.data(), text.size(), "%F %T", &parts);
    std::array<char, 8> millis{};
    std::snprintf(millis.data(), millis.size(), ".%03d", static_cast<int>(std::abs(nanos / 1'000'000 % 1'000)));
    return std::string(text.data()) + millis.data();
}

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
    const std::chrono::system_clock::time_point arrived(
        std::chrono::nanoseconds(wallNanos(trace, request.section.begin.time)));
    return {{"request", request.operation},
            {"serial", request.number},
            {"state", request.section.end ? "answered" : "waiting"},
            {"program", trace.program},
            {"pid", trace.pid},
            {"arrived", timestamp(arrived)},
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

void printUnless(bool isEmpty, const char* title, const Table& table, size_t width, std::ostream& out) {
    if (isEmpty) return;
    out << title;
    table.print(out, width);
}

}  // namespace

int trace(const TraceOptions& options, Output& output) {
    const int64_t start = monotonicNanos();
    if (options.seconds) waitFor(*options.seconds, output);
    auto traces = readOrExplain("trace", options.last, "", output);
    if (traces.empty()) return NO_SERVICE;
    if (options.seconds) eraseBefore(start, traces);
    if (!write(traces, options.output, output.stream())) {
        const std::string file = options.output.empty() ? "the output" : options.output;
        output.report(errorJson("notWritten", "trace", "can't write " + file + ": " + std::strerror(errno)));
        return ANSWERED_WITH_ERROR;
    }
    summarize(traces, options.output, output);
    return OK;
}

std::vector<Trace> daemonTraces(const char* verb, Output& output) {
    auto traces = readOrExplain(verb, false, DAEMON, output);
    keepCurrent(traces);
    return traces;
}

int64_t nowOf(const Trace& trace) {
    if (trace.isAlive) return monotonicNanos();
    return trace.marks.empty() ? trace.startTime : trace.marks.back().time;
}

int requests(bool all, Output& output) {
    const auto traces = daemonTraces("requests", output);
    if (traces.empty()) return NO_SERVICE;
    const RequestsOptions options{all, output.style().json, output.style().width};
    for (const Trace& trace : traces) printRequests(trace, nowOf(trace), options, output.stream());
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
    printUnless(waiting.isEmpty(), "", waiting, options.width, out);
    if (trace.unplaced > 0) out << "and " << trace.unplaced << " more sections, for which there was no place\n";
    printUnless(threads.isEmpty(), "\nthreads that are inside a section\n", threads, options.width, out);
    printUnless(!options.all || answered.isEmpty(), "\nanswered, as far back as the recording goes\n", answered,
                options.width, out);
}

}  // namespace subsysctl
