#include "simulator/Scenario.h"

#include "simulator/ScenarioPlayer.h"
#include "tests/simulator/ScenarioFolder.h"
#include "tests/simulator/ScenarioVocabulary.h"
#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <utility>

namespace simulator {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

using Report = std::pair<int, std::string>;

struct Parsed {
    std::vector<ScenarioLine> lines;
    std::vector<Report> bad;
};

Parsed parse(const std::string& text, const Vocabulary& vocabulary = test::SIZED) {
    std::istringstream input(text);
    Parsed parsed;
    parsed.lines = parseScenario(
        input, vocabulary, [&](int number, const std::string& reason) { parsed.bad.emplace_back(number, reason); });
    return parsed;
}

TEST(ParseScenario, Line_WhenGood_ThenAllItsWordsAreKept) {
    const auto [lines, bad] = parse(
        "# comment\n\nicc at 0 crash # now\n\ticc every 0x10 event bare\r\nvs what ever\nims\n"
        "icc on whole 3 answer -7 delay 20 short 4 twice null small=255\nicc on byteCode answer 0xff\n"
        "icc at 1 event record null after=5 repeat=9 bytes=3 small=-1\nicc on whole silent\n");
    EXPECT_THAT(bad, IsEmpty());
    ASSERT_EQ(lines.size(), 6u);
    const auto crash = FieldsAre(_, _, _, _, false, false, false, true);
    EXPECT_THAT(lines[0], FieldsAre(3, ScenarioLine::AT, 0, _, _, _, crash));
    EXPECT_THAT(lines[1], FieldsAre(4, ScenarioLine::EVERY, 16, _, _, Optional(FieldsAre(1, _, _, _, _, false)), _));
    const auto full = FieldsAre(-7, 20, 4, SizeIs(1), false, true, true, false);
    EXPECT_THAT(lines[2], FieldsAre(7, ScenarioLine::ON, _, 0, 3, _, full));
    EXPECT_THAT(lines[3], FieldsAre(8, ScenarioLine::ON, _, 1, 0, _, FieldsAre(255, _, _, _, _, _, _, _)));
    EXPECT_THAT(lines[4].event, Optional(FieldsAre(0, ElementsAre(FieldsAre(_, ElementsAre(0xff))), 5, 9, 3, true)));
    EXPECT_THAT(lines[5], FieldsAre(10, ScenarioLine::ON, _, 0, 0, _, FieldsAre(_, _, _, _, true, _, _, _)));
}

TEST(ParseScenario, Fields_WhenOfAllKinds_ThenTheRecordHasThem) {
    const auto [lines, bad] =
        parse("icc at 1 event record small=0x7f pair=1,65535 large=-9223372036854775808 data=0aFF text=abcd\n");
    ASSERT_THAT(bad, IsEmpty());
    test::ScenarioRecord record{0, {8, 8}, 0, {9, 9, 9, 9}, {'x', 'x', 'x', 'x'}};
    record = withFields(record, lines.at(0).event->fields);
    EXPECT_EQ(record.small, 0x7f);
    EXPECT_THAT(record.pair, ElementsAre(1, 65535));
    EXPECT_EQ(record.large, INT64_MIN);
    EXPECT_THAT(record.data, ElementsAre(0x0a, 0xff, 9, 9));
    EXPECT_THAT(record.text, ElementsAre('a', 'b', 'c', 'd'));
}

TEST(ParseScenario, Line_WhenBad_ThenNumberAndReasonAndTheOthersAreRead) {
    const std::pair<const char*, const char*> table[] = {
        {"modem at 1 crash", "unknown subject 'modem'"},
        {"icc", "unknown trigger ''"},
        {"icc at 0x-1 crash", "bad number '0x-1'"},
        {"icc every 0 crash", "bad number '0'"},
        {"icc at 1", "nothing to do after '1'"},
        {"icc on nothing crash", "unknown request 'nothing'"},
        {"icc on byteCode answer 256", "bad number '256'"},
        {"icc on plain answer 1", "this cannot be said here: 'answer'"},
        {"icc on whole crash event bare", "this cannot be said here: 'event'"},
        {"icc at 1 event record huge=1", "unknown field 'huge=1'"},
        {"icc at 1 event record small", "unknown field 'small'"},
        {"icc at 1 event record small=256", "bad value 'small=256'"},
        {"icc at 1 event record pair=1,2,3", "bad value 'pair=1,2,3'"},
        {"icc at 1 event record data=0", "bad value 'data=0'"},
        {"icc at 1 event record data=0102030405", "bad value 'data=0102030405'"},
        {"icc at 1 event record text=abcde", "bad value 'text=abcde'"},
        {"icc at 1 event record bytes=5000", "bad number '5000'"},
    };
    for (const auto& [line, reason] : table) {
        const Parsed parsed = parse(std::string("icc at 1 crash\n\n") + line + "\nicc at 2 crash");
        EXPECT_THAT(parsed.bad, ElementsAre(Report(3, reason))) << line;
        EXPECT_EQ(parsed.lines.size(), 2u) << line;
    }
    const std::string word(100'000, 'x');
    EXPECT_THAT(parse("icc " + word).bad, ElementsAre(Report(1, "unknown trigger '" + word.substr(0, 40) + "'")));
    EXPECT_THAT(parse("ims at 1 event record bytes=1", test::UNSIZED).bad,
                ElementsAre(Report(1, "unknown field 'bytes=1'")));
}

TEST(ParseScenario, Content_WhenHuge_ThenSafe) {
    std::string words = "icc on whole";
    for (int i = 0; i < 100'000; ++i) words += " twice";
    EXPECT_EQ(parse(words).lines.size(), 1u);
    EXPECT_EQ(parse(std::string(100'000, '\0')).bad.size(), 1u);
    EXPECT_THAT(parse("icc at 1 crash\n" + std::string(1'000'000, ' ')).bad, IsEmpty());
}

TEST(LoadScenario, BadLine_WhenTwoPartsRead_ThenLoggedOnce) {
    const test::ScenarioFolder device("icc at 1 crash\nmodem\nicc no\nvs no\n");
    const test::LogCapture log;
    EXPECT_EQ(loadScenario(test::SIZED).size(), 1u);
    EXPECT_TRUE(loadScenario({"vs", test::REQUESTS, test::EVENTS, false}).empty());
    EXPECT_THAT(log.lines("Simulator"),
                ElementsAre(test::LogLine{ANDROID_LOG_ERROR, "Simulator", "scenario line 2: unknown subject 'modem'"},
                            test::LogLine{ANDROID_LOG_ERROR, "Simulator", "scenario line 3: unknown trigger 'no'"},
                            test::LogLine{ANDROID_LOG_ERROR, "Simulator", "scenario line 4: unknown trigger 'no'"}));
}

TEST(LoadScenario, File_WhenMissingHugeOrNoFile_ThenNoLines) {
    const test::DeviceFolder device;
    const auto isRead = [] { return !loadScenario(test::SIZED).empty(); };
    EXPECT_FALSE(isRead());
    device.write(SCENARIO_PATH, "icc at 1 crash\n");
    EXPECT_TRUE(isRead());
    std::filesystem::resize_file(device.place(SCENARIO_PATH), (16 << 20) + 1);
    EXPECT_FALSE(isRead());
    device.remove(SCENARIO_PATH);
    device.makeFifo(SCENARIO_PATH);
    EXPECT_FALSE(isRead());
}

// A player whose posted tasks wait for the test.
struct PlayedScenario {
    explicit PlayedScenario(const std::string& scenario) : device(scenario) {}

    test::ScenarioFolder device;
    std::vector<std::pair<int64_t, ScenarioPlayer::Task>> posted;
    std::vector<size_t> delivered;
    ScenarioPlayer player{
        test::SIZED,
        [this](int64_t millis, ScenarioPlayer::Task task) { posted.emplace_back(millis, std::move(task)); },
        [this](const ScenarioEvent& event) { delivered.push_back(event.kind); }};

    void runPosted() {
        const auto tasks = std::exchange(posted, {});
        for (const auto& [millis, task] : tasks) task();
    }
};

TEST(ScenarioPlayer, Start_WhenLinesAreTimed_ThenTheyArePosted) {
    PlayedScenario scenario("icc at 30 event record\nicc every 10 event bare\nicc on plain event bare\n");
    scenario.player.start();
    ASSERT_EQ(scenario.posted.size(), 2u);
    EXPECT_EQ(scenario.posted[0].first, 30);
    scenario.runPosted();  // both lines act, and the second one is due again
    EXPECT_EQ(scenario.posted.size(), 3u);
    EXPECT_EQ(scenario.posted[2].first, 10);
    scenario.runPosted();
    EXPECT_THAT(scenario.delivered, ElementsAre(0, 1));
    EXPECT_EQ(scenario.posted.size(), 2u);
}

TEST(ScenarioPlayer, React_WhenLinesNameATime_ThenEachRequestIsCounted) {
    PlayedScenario scenario(
        "icc on whole 2 answer 5\nicc on whole delay 3\nicc on whole 2 delay 4 silent\n"
        "icc on whole 2 event bare after=7 repeat=2\n");
    const Reaction first = scenario.player.react(0);
    EXPECT_EQ(scenario.player.react(1).delayMillis(), 0);
    const Reaction second = scenario.player.react(0);
    EXPECT_EQ(first.delayMillis(), 3);
    EXPECT_TRUE(first.isSuccess());
    EXPECT_THAT(first.events, IsEmpty());
    EXPECT_THAT(second.answer, FieldsAre(5, 4, _, _, true, _, _, _));
    EXPECT_FALSE(second.isSuccess());
    scenario.player.play(second);
    ASSERT_EQ(scenario.posted.size(), 1u);
    EXPECT_EQ(scenario.posted[0].first, 7);
    scenario.runPosted();
    EXPECT_THAT(scenario.delivered, ElementsAre(1, 1));
}

TEST(ScenarioPlayerDeathTest, React_WhenALineSaysCrash_ThenAbort) {
    PlayedScenario scenario("icc on plain 2 crash\n");
    EXPECT_FALSE(scenario.player.react(2).answer.crash);
    EXPECT_EXIT((void)scenario.player.react(2), testing::KilledBySignal(SIGABRT), "crash, as scenario line 1 says");
}

}  // namespace
}  // namespace simulator
