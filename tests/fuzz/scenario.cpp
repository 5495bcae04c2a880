// Any scenario file: it is read, and what it says is played.

#include "simulator/ScenarioPlayer.h"
#include "tests/support/DeviceFolder.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

namespace {

using namespace simulator;

struct Record {
    uint8_t small;
    uint16_t pair[2];
    int64_t large;
    uint8_t data[4];
    char text[4];
};
constexpr Field FIELDS[] = {SIMULATOR_FIELD(Record, small), SIMULATOR_FIELD(Record, pair),
                            SIMULATOR_FIELD(Record, large), SIMULATOR_HEX_FIELD(Record, data),
                            SIMULATOR_FIELD(Record, text)};
constexpr RequestKind REQUESTS[] = {
    {"whole", DELAY | SILENT | TWICE | NULL_OBJECT | SHORT, 4, FIELDS}, {"byteCode", DELAY, 1}, {"plain", 0, 0}};
constexpr EventKind EVENTS[] = {{"record", sizeof(Record), FIELDS}, {"bare", 0, {}}};
constexpr Vocabulary SIZED = {"icc", REQUESTS, EVENTS, true};
constexpr Vocabulary UNSIZED = {"ims", REQUESTS, EVENTS, false};

// A scenario may end the process or deliver a million events: what it says, not what it should do here.
bool isPlayable(const std::vector<ScenarioLine>& lines) {
    return std::none_of(lines.begin(), lines.end(),
                        [](const auto& line) { return line.answer.crash || (line.event && line.event->repeat > 9); });
}

void play(const Vocabulary& vocabulary) {
    constexpr size_t MAX_TASKS = 64;
    std::vector<ScenarioPlayer::Task> tasks;
    tasks.reserve(MAX_TASKS);
    ScenarioPlayer player(
        vocabulary,
        [&](int64_t, ScenarioPlayer::Task task) {
            if (tasks.size() < MAX_TASKS) tasks.push_back(std::move(task));
        },
        [](const ScenarioEvent& event) { (void)withFields(Record{}, event.fields); });
    player.start();
    for (int time = 0; time < 3; ++time) {
        for (size_t request = 0; request < std::size(REQUESTS); ++request) {
            const Reaction reaction = player.react(request);
            (void)withFields(Record{}, reaction.answer.fields);
            player.play(reaction);
        }
    }
    for (size_t i = 0; i < tasks.size(); ++i) tasks[i]();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::DeviceFolder DEVICE;
    const std::string text(data, data + size);
    DEVICE.write(SCENARIO_PATH, text);
    for (const Vocabulary& vocabulary : {SIZED, UNSIZED}) {
        std::istringstream file(text);
        if (isPlayable(parseScenario(file, vocabulary, [](int, const std::string&) {}))) play(vocabulary);
    }
    return 0;
}
