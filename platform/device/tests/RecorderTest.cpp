#include <device/Recorder.h>

#include <device/TraceFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#define ATRACE_TAG ATRACE_TAG_HAL
#include <cutils/trace.h>

#include "device/TraceDecoder.h"
#include "tests/support/Await.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Threads.h"

namespace {

using device::MarkKind;
using device::Trace;
using device::TraceMark;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<std::string> names(const std::vector<TraceMark>& marks) {
    std::vector<std::string> result;
    for (const TraceMark& mark : marks) result.push_back(mark.name);
    return result;
}

class Recorder : public testing::Test {
protected:
    std::filesystem::path file(const std::string& name) const { return mNames.path() / name; }

    // The one trace of this process, or an empty one.
    static Trace read(bool last = false) {
        std::vector<std::string> problems;
        auto traces = device::readTraces(last, "test", problems);
        EXPECT_THAT(problems, IsEmpty());
        EXPECT_THAT(traces, SizeIs(1));
        return traces.empty() ? Trace() : traces.front();
    }

    const test::NamesFolder mNames;
};

TEST_F(Recorder, Marks_WhenOfEachKind_ThenReadAsTheyWere) {
    ATRACE_INSTANT("before there is a recorder");
    EXPECT_FALSE(ATRACE_ENABLED());
    ASSERT_TRUE(device::startRecorder("test"));
    EXPECT_TRUE(ATRACE_ENABLED());
    EXPECT_FALSE(atrace_is_tag_enabled(ATRACE_TAG_NEVER));
    atrace_instant(ATRACE_TAG_NEVER, "of a tag that is off");
    ATRACE_BEGIN("section");
    ATRACE_ASYNC_BEGIN("request #7", -7);
    ATRACE_INSTANT("");
    ATRACE_INT("counter", -1);
    ATRACE_INT64("counter", INT64_MIN);
    ATRACE_ASYNC_END("request #7", -7);
    ATRACE_END();
    const Trace trace = read();
    const std::tuple<MarkKind, std::string, int64_t> expected[] = {{MarkKind::BEGIN, "section", 0},
                                                                   {MarkKind::ASYNC_BEGIN, "request #7", -7},
                                                                   {MarkKind::INSTANT, "", 0},
                                                                   {MarkKind::COUNTER, "counter", -1},
                                                                   {MarkKind::COUNTER, "counter", INT64_MIN},
                                                                   {MarkKind::ASYNC_END, "request #7", -7},
                                                                   {MarkKind::END, "", 0}};
    ASSERT_THAT(trace.marks, SizeIs(std::size(expected)));
    int64_t previous = trace.startTime;
    for (size_t i = 0; i < std::size(expected); ++i) {
        const TraceMark& mark = trace.marks[i];
        EXPECT_EQ(std::tuple(mark.kind, mark.name, mark.value), expected[i]);
        EXPECT_EQ(mark.thread, gettid());
        EXPECT_LE(std::exchange(previous, mark.time), mark.time);
    }
    EXPECT_NEAR(static_cast<double>(trace.startWallTime), static_cast<double>(time(nullptr)) * 1e9, 10e9);
    EXPECT_EQ(trace.program, "test");
    EXPECT_EQ(trace.pid, getpid());
    EXPECT_TRUE(trace.isAlive);
    EXPECT_THAT(trace.open, IsEmpty());
}

TEST_F(Recorder, Names_WhenLongOrOfOtherBytes_ThenCutAndMadePrintable) {
    ASSERT_TRUE(device::startRecorder("test"));
    const std::pair<std::string, std::string> cases[] = {{std::string(71, 'a'), std::string(71, 'a')},
                                                         {std::string(72, 'b'), std::string(72, 'b')},
                                                         {std::string(5'000, 'c'), std::string(72, 'c')},
                                                         {"\x1B[2J\n\x7F\xC2\x9B", "?[2J????"}};
    for (const auto& [name, read] : cases) ATRACE_INSTANT(name.c_str());
    ATRACE_INSTANT(nullptr);
    const auto marks = read().marks;
    ASSERT_THAT(marks, SizeIs(std::size(cases) + 1));
    for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(marks[i].name, cases[i].second);
    EXPECT_EQ(marks.back().name, "");
}

TEST_F(Recorder, OpenSections_WhenAMillionOthersCameAndWent_ThenStillListed) {
    ASSERT_TRUE(device::startRecorder("test"));
    ATRACE_ASYNC_BEGIN("request #1", 1);
    test::Event entered;
    std::promise<void> leave;  // As late as the machine is slow.
    std::thread inside([&] {
        pthread_setname_np(pthread_self(), "inside");
        for (const char* each : {"outer", "inner"}) ATRACE_BEGIN(each);
        entered.signal();
        leave.get_future().wait();
        for (int i = 0; i < 2; ++i) ATRACE_END();
    });
    ASSERT_TRUE(entered.await());
    for (int i = 0; i < 1'000'000; ++i) {
        ATRACE_ASYNC_BEGIN("request #2", i);
        ATRACE_ASYNC_END("request #2", i);
    }
    const Trace trace = read();
    EXPECT_THAT(names(trace.open), ElementsAre("request #1", "outer", "inner"));
    ASSERT_THAT(trace.open, SizeIs(3));
    EXPECT_EQ(trace.threadNames.at(trace.open[1].thread), "inside");
    EXPECT_LT(trace.open[0].time, trace.marks[trace.marks.size() / 2].time);
    EXPECT_GT(trace.marks.size(), 30'000u);
    EXPECT_LE(trace.marks.size(), 32'768u);
    EXPECT_EQ(trace.unplaced, 0u);
    leave.set_value();
    inside.join();
    ATRACE_ASYNC_END("request #1", 1);
    EXPECT_THAT(read().open, IsEmpty());
}

TEST_F(Recorder, OpenSections_WhenMoreThanThereAreRoomFor_ThenTheRestIsCounted) {
    constexpr int COUNT = 10'000;
    ASSERT_TRUE(device::startRecorder("test"));
    // As requests with their stages do: several names with the same cookies.
    const auto each = [](void (*mark)(const char* name, int cookie)) {
        for (int i = 0; i < COUNT; ++i) mark(("stage " + std::to_string(i % 6)).c_str(), i / 6);
    };
    // None of this loses a place.
    test::inThreads(4, [](size_t thread) {
        const std::string name = "request " + std::to_string(thread);
        for (int i = 0; i < 20'000; ++i) {
            ATRACE_ASYNC_BEGIN(name.c_str(), 1);
            ATRACE_ASYNC_END(name.c_str(), 1);
        }
    });
    each([](const char* name, int cookie) { ATRACE_ASYNC_BEGIN(name, cookie); });
    for (int i = 0; i < 10; ++i) ATRACE_BEGIN("nested");
    const Trace full = read();
    EXPECT_EQ(full.open.size(), 4'096u + 8);
    EXPECT_EQ(full.unplaced, COUNT - 4'096u + 2);
    for (int i = 0; i < 11; ++i) ATRACE_END();  // one more than there are
    EXPECT_EQ(read().unplaced, COUNT - 4'096u);
    each([](const char* name, int cookie) { ATRACE_ASYNC_END(name, cookie); });
    const Trace empty = read();
    EXPECT_THAT(empty.open, IsEmpty());
    EXPECT_EQ(empty.unplaced, 0u);
}

TEST_F(Recorder, Marks_WhenManyThreadsWriteAndOneReads_ThenEachIsWholeAndInOrder) {
    constexpr size_t THREADS = 3;
    constexpr int64_t COUNT = 1'000'000'000;
    constexpr int READS = 3;
    ASSERT_TRUE(device::startRecorder("test"));
    std::atomic<bool> isOver = false;
    const auto nameOf = [](int64_t value) {
        return std::string(static_cast<size_t>(1 + value % 72), static_cast<char>('a' + value % 26));
    };
    const auto write = [&](size_t thread) {
        for (auto value = static_cast<int64_t>(thread) * COUNT; !isOver; ++value) {
            ATRACE_INT64(nameOf(value).c_str(), value);
        }
    };
    const auto check = [&](const Trace& trace) {
        std::map<int32_t, int64_t> latest;
        for (const TraceMark& mark : trace.marks) {
            ASSERT_EQ(mark.name, nameOf(mark.value));
            ASSERT_LT(latest.emplace(mark.thread, -1).first->second, mark.value);
            latest[mark.thread] = mark.value;
        }
    };
    test::inThreads(THREADS + 1, [&](size_t thread) {
        if (thread < THREADS) return write(thread);
        for (int i = 0; i < READS; ++i) check(read());
        isOver = true;
    });
    EXPECT_GT(read().marks.size(), 32'000u);
    EXPECT_EQ(read().lostMarks, 0u);
}

TEST_F(Recorder, Threads_WhenThousandsCameAndWent_ThenTheNextIsRecordedLikeTheFirst) {
    ASSERT_TRUE(device::startRecorder("test"));
    const auto mark = [](const std::string& name) {
        std::thread([&] {
            pthread_setname_np(pthread_self(), name.c_str());
            ATRACE_BEGIN(name.c_str());
            ATRACE_INSTANT(name.c_str());
            ATRACE_END();
        }).join();
    };
    for (int i = 0; i < 3'000; ++i) mark("t" + std::to_string(i));
    const Trace trace = read();
    EXPECT_EQ(trace.lostMarks, 0u);
    EXPECT_EQ(trace.unplaced, 0u);
    ASSERT_GE(trace.marks.size(), 3u);
    const TraceMark& last = trace.marks[trace.marks.size() - 2];
    EXPECT_EQ(last.name, "t2999");
    EXPECT_EQ(trace.threadNames.at(last.thread), "t2999");
}

TEST_F(Recorder, Process_WhenStoppedOrKilled_ThenItsFileIsReadAndTheNextStartKeepsIt) {
    test::ChildProcess process([] {
        device::startRecorder("test");
        ATRACE_ASYNC_BEGIN("request #1", 1);
        raise(SIGSTOP);
    });
    ASSERT_EQ(waitpid(process.pid(), nullptr, WUNTRACED), process.pid());
    const Trace stopped = read();
    EXPECT_TRUE(stopped.isAlive);
    EXPECT_EQ(stopped.pid, process.pid());
    EXPECT_THAT(names(stopped.open), ElementsAre("request #1"));
    process.end();
    EXPECT_FALSE(read().isAlive);
    EXPECT_THAT(names(read().open), ElementsAre("request #1"));

    ASSERT_TRUE(device::startRecorder("test"));
    EXPECT_EQ(read().pid, getpid());
    EXPECT_THAT(read().open, IsEmpty());
    EXPECT_EQ(read(true).pid, process.pid());
    EXPECT_THAT(names(read(true).open), ElementsAre("request #1"));
}

TEST_F(Recorder, Process_WhenAnotherOfTheProgramRecords_ThenEachHasItsFile) {
    ASSERT_TRUE(device::startRecorder("test"));
    ATRACE_INSTANT("first");
    test::ChildProcess second([] {
        ATRACE_INSTANT("of the child, which inherits no recorder");
        device::startRecorder("test");
        ATRACE_INSTANT("second");
        raise(SIGSTOP);
    });
    ASSERT_EQ(waitpid(second.pid(), nullptr, WUNTRACED), second.pid());
    std::vector<std::string> problems;
    const auto traces = device::readTraces(false, "test", problems);
    ASSERT_THAT(traces, SizeIs(2));
    EXPECT_THAT(names(traces[0].marks), ElementsAre("first"));
    EXPECT_EQ(traces[1].program, "test@2");
    EXPECT_THAT(names(traces[1].marks), ElementsAre("second"));
    EXPECT_NE(traces[1].marks.front().thread, traces[0].marks.front().thread);
    EXPECT_THAT(device::readTraces(false, "tes", problems), IsEmpty());
    EXPECT_THAT(device::readTraces(false, "", problems), SizeIs(2));
}

TEST_F(Recorder, Start_WhenTheVariableAsksOrNot_ThenAccordingly) {
    setenv("SUBSYS_TRACE", "0", 1);
    EXPECT_FALSE(device::startRecorderWhenAsked("test"));
    EXPECT_FALSE(std::filesystem::exists(file("trace@test")));
    setenv("SUBSYS_TRACE", "1", 1);
    EXPECT_TRUE(device::startRecorderWhenAsked("test"));
    EXPECT_EQ(std::filesystem::status(file("trace@test")).permissions(), std::filesystem::perms(0600));
}

void closeFolder(const std::filesystem::path& folder) {
    std::filesystem::permissions(folder, std::filesystem::perms::others_read, std::filesystem::perm_options::add);
}
void limitFiles(const std::filesystem::path&) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1 << 20, 1 << 20};
    setrlimit(RLIMIT_FSIZE, &limit);
}
void placeFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder / "trace@test");
    std::filesystem::create_directories(folder / "trace-last@test/full");
}

TEST_F(Recorder, Start_WhenTheFileCannotBeMade_ThenOneWarningAndNothingIsRecorded) {
    const std::pair<void (*)(const std::filesystem::path&), const char*> cases[] = {
        {placeFolder, "File exists"}, {limitFiles, "File too large"}, {closeFolder, "Operation not permitted"}};
    for (const auto& [spoil, reason] : cases) {
        const test::NamesFolder names;
        spoil(names.path());
        const test::LogCapture log;
        EXPECT_FALSE(device::startRecorder("test"));
        ATRACE_INSTANT("dropped");
        EXPECT_FALSE(ATRACE_ENABLED());
        const test::LogLine warning{ANDROID_LOG_WARN, "Recorder",
                                    "nothing is recorded in " + names.path().string() + ": " + reason};
        EXPECT_THAT(log.lines(), ElementsAre(warning));
        EXPECT_FALSE(std::filesystem::is_regular_file(names.path() / "trace@test"));
    }
}

// What a reader meets when a file was damaged, or written by somebody else.
class TraceFile : public Recorder {
protected:
    void SetUp() override {
        const test::ChildProcess process([] {
            device::startRecorder("test");
            for (int i = 0; i < 5'000; ++i) ATRACE_ASYNC_BEGIN("request", i);
            ATRACE_BEGIN("section");
            raise(SIGSTOP);
        });
        ASSERT_EQ(waitpid(process.pid(), nullptr, WUNTRACED), process.pid());
        mBytes.resize(std::filesystem::file_size(mPath));
        std::ifstream(mPath, std::ios::binary).read(mBytes.data(), static_cast<std::streamsize>(mBytes.size()));
        ASSERT_GT(mBytes.size(), 3'000'000u);
    }
    void write(const std::string& bytes) const { std::ofstream(mPath, std::ios::binary) << bytes; }

    const std::filesystem::path mPath = file("trace@test");
    std::string mBytes;
};

TEST(TraceDecoder, Decode_WhenTheCopiesDiffer_ThenOnlyWhatTheyHaveInCommon) {
    using device::trace::Slot;
    const auto first = std::make_unique<device::trace::File>();
    const auto write = [](Slot& slot, uint64_t time, MarkKind kind) {
        slot.time = time;
        slot.origin = device::trace::origin(7, static_cast<uint8_t>(kind), 1);
        slot.name[0] = 'a';
    };
    for (const size_t i : {0U, 1U, 2U}) write(first->ring[i], 10 + i, MarkKind::INSTANT);
    for (const size_t i : {0U, 1U, 2U}) write(first->open[i], 20 + i, MarkKind::ASYNC_BEGIN);
    for (const size_t i : {0U, 1U}) write(first->threads[0].sections[i], 30 + i, MarkKind::BEGIN);
    first->keys = {5, 6, device::trace::TAKEN_KEY};
    first->threadOwners[0] = 7;
    first->threads[0].depth = 2;
    for (const size_t i : {0U, 1U}) first->threads[i].id = 7;  // The second one's thread has ended.
    first->threads[0].name[0] = 'n';
    const auto second = std::make_unique<device::trace::File>(*first);
    const auto times = [&] {
        const Trace trace = device::trace::decode(*first, *second);
        std::vector<int64_t> all;
        for (const auto* marks : {&trace.marks, &trace.open}) {
            for (const TraceMark& mark : *marks) all.push_back(mark.time);
        }
        return all;
    };
    EXPECT_THAT(times(), ElementsAre(10, 11, 12, 20, 21, 30, 31));
    second->ring[1].name[0] = 'b';  // torn
    second->ring[2].time = 0;       // being written
    second->keys[0] = 0;            // ended
    second->threads[0].depth = 1;   // the inner one ended
    EXPECT_THAT(times(), ElementsAre(10, 21, 30));
    EXPECT_EQ(device::trace::decode(*first, *second).threadNames.at(7), "n");
}

TEST_F(TraceFile, Read_WhenItIsNoTrace_ThenNothingAndTheReasonAtOnce) {
    std::string otherMagic = mBytes;
    otherMagic[0] ^= 1;
    const std::filesystem::path real = file("elsewhere");
    std::filesystem::rename(mPath, real);
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { write(""); }, "it is shorter than a trace, or can't be read"},
        {[&] { write(mBytes.substr(0, mBytes.size() - 1)); }, "it is shorter than a trace, or can't be read"},
        {[&] { write(otherMagic); }, "it is no trace"},
        {[&] { write(std::string(mBytes.size(), '\0')); }, "it is no trace"},
        {[&] { std::filesystem::create_symlink(real, mPath); }, ""},
        {[&] { mkfifo(mPath.c_str(), 0600); }, ""},
        {[&] { std::filesystem::create_directory(mPath); }, ""},
        {[] {}, ""}};
    for (const auto& [make, reason] : cases) {
        std::filesystem::remove(mPath);
        make();
        std::string problem;
        EXPECT_FALSE(device::readTrace(mPath, problem));
        EXPECT_THAT(problem, testing::StartsWith(mPath.string() + ": " + reason));
    }
}

TEST_F(TraceFile, Read_WhenItsBytesAreRandom_ThenOnlyWhatARecorderCouldHaveWritten) {
    std::mt19937_64 random(1);
    const auto isPossible = [](const TraceMark& mark) {
        return mark.name.size() <= 72 && mark.time > 0 && mark.time <= int64_t{1} << 60 &&
               mark.kind >= MarkKind::BEGIN && mark.kind <= MarkKind::COUNTER &&
               std::all_of(mark.name.begin(), mark.name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    };
    const size_t words = mBytes.size() / sizeof(uint64_t);
    for (const size_t damages : {words / 1'000, words / 10, words * 3}) {
        std::string bytes = mBytes;
        for (size_t i = 0; i < damages; ++i) {
            const uint64_t word = random() >> random() % 64;
            memcpy(&bytes[16 + random() % (words - 2) * sizeof(word)], &word, sizeof(word));
        }
        write(bytes);
        std::string problem;
        const auto trace = device::readTrace(mPath, problem);
        ASSERT_TRUE(trace) << problem;
        EXPECT_TRUE(std::all_of(trace->marks.begin(), trace->marks.end(), isPossible));
        EXPECT_TRUE(std::all_of(trace->open.begin(), trace->open.end(), isPossible));
        EXPECT_GT(trace->marks.size() + trace->open.size(), 0u);
    }
}

}  // namespace
