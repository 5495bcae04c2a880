#include "simulator/ScenarioPlayer.h"

#include <android/log.h>

#include <cstdlib>
#include <utility>

namespace simulator {

namespace {

void crashIfWanted(const ScenarioLine& line) {
    if (!line.answer.crash) return;
    __android_log_print(ANDROID_LOG_ERROR, "Simulator", "crash, as scenario line %d says", line.number);
    std::abort();
}

}  // namespace

ScenarioPlayer::ScenarioPlayer(const Vocabulary& vocabulary, Post post, Deliver deliver)
    : mLines(loadScenario(vocabulary)),
      mPost(std::move(post)),
      mDeliver(std::move(deliver)),
      mCounts(vocabulary.requests.size()) {}

void ScenarioPlayer::start() {
    for (const ScenarioLine& line : mLines) {
        if (line.trigger != ScenarioLine::ON) schedule(line);
    }
}

void ScenarioPlayer::schedule(const ScenarioLine& line) {
    mPost(line.millis, [this, &line] {
        act(line);
        if (line.trigger == ScenarioLine::EVERY) schedule(line);
    });
}

void ScenarioPlayer::act(const ScenarioLine& line) {
    crashIfWanted(line);
    if (line.event) playEvent(*line.event);
}

Reaction ScenarioPlayer::react(size_t request) {
    const int64_t count = ++mCounts[request];
    Reaction reaction;
    for (const ScenarioLine& line : mLines) {
        if (line.trigger != ScenarioLine::ON || line.request != request) continue;
        if (line.nth != 0 && line.nth != count) continue;
        crashIfWanted(line);
        reaction.answer.merge(line.answer);
        if (line.event) reaction.events.push_back(&*line.event);
    }
    return reaction;
}

void ScenarioPlayer::play(const Reaction& reaction) {
    for (const ScenarioEvent* event : reaction.events) playEvent(*event);
}

void ScenarioPlayer::playEvent(const ScenarioEvent& event) {
    mPost(event.afterMillis, [this, &event] {
        for (int64_t i = 0; i < event.repeat; ++i) mDeliver(event);
    });
}

}  // namespace simulator
