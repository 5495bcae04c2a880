#pragma once

#include "simulator/Scenario.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

namespace simulator {

// What the scenario says about one request.
struct Reaction {
    ScenarioAnswer answer;
    std::vector<const ScenarioEvent*> events;  // to be played once the request is answered

    [[nodiscard]] int64_t delayMillis() const { return answer.delayMillis.value_or(0); }
    [[nodiscard]] bool isSuccess() const { return answer.code.value_or(0) == 0; }
};

// Plays the scenario of one simulated part. The scenario is read at construction.
class ScenarioPlayer {
public:
    using Task = std::function<void()>;
    // Runs the task on the part's own thread, so many milliseconds from now.
    using Post = std::function<void(int64_t delayMillis, Task task)>;
    // Delivers an event once; on the part's own thread.
    using Deliver = std::function<void(const ScenarioEvent& event)>;

    ScenarioPlayer(const Vocabulary& vocabulary, Post post, Deliver deliver);

    // The times of the scenario count from here. Once.
    void start();
    // Counts the request, an index into Vocabulary::requests. Ends the process where the scenario wants that.
    // Thread: any.
    [[nodiscard]] Reaction react(size_t request);
    // Thread: any.
    void play(const Reaction& reaction);

private:
    void schedule(const ScenarioLine& line);
    void act(const ScenarioLine& line);
    void playEvent(const ScenarioEvent& event);

    const std::vector<ScenarioLine> mLines;
    const Post mPost;
    const Deliver mDeliver;
    std::vector<std::atomic<int64_t>> mCounts;
};

}  // namespace simulator
