// Any scenario file: it is read, and what it says is played.

#include "simulator/ScenarioPlayer.h"
#include "tests/simulator/ScenarioVocabulary.h"
#include "tests/support/DeviceFolder.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

namespace {

using namespace simulator;
using test::ScenarioRecord;

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
        [](const ScenarioEvent& event) { (void)withFields(ScenarioRecord{}, event.fields); });
    player.start();
    for (int time = 0; time < 3; ++time) {
        for (size_t request = 0; request < std::size(test::REQUESTS); ++request) {
            const Reaction reaction = player.react(request);
            (void)withFields(ScenarioRecord{}, reaction.answer.fields);
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
    for (const Vocabulary& vocabulary : {test::SIZED, test::UNSIZED}) {
        std::istringstream file(text);
        if (isPlayable(parseScenario(file, vocabulary, [](int, const std::string&) {}))) play(vocabulary);
    }
    return 0;
}
