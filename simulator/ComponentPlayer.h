#pragma once

#include "simulator/ScenarioPlayer.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>

#include <cstddef>
#include <functional>

namespace simulator {

// Plays the scenario of a simulated component on the component's looper, and answers its requests as the scenario says.
class ComponentPlayer {
public:
    // Changes the component's state and reports events; runs after the answer, where that is a success. Thread: looper.
    using Effect = std::function<void()>;
    // Makes the value of a successful answer. Thread: looper.
    using Result = std::function<mindroid::sp<mindroid::Object>(const ScenarioAnswer& answer)>;

    // The owner is the component that holds the player.
    ComponentPlayer(const char* tag, const Vocabulary& vocabulary, mindroid::Handler& owner,
                    ScenarioPlayer::Deliver deliver);

    // Thread: looper.
    void start();
    // Counts the request; what it says is for the caller to do, its events included. Thread: looper.
    [[nodiscard]] Reaction react(size_t request);
    void play(const Reaction& reaction);
    // Has the request answered on the looper. Thread: any.
    void serve(size_t request, const mindroid::sp<mindroid::Message>& reply, Effect effect, Result result = nullptr);
    // Runs the task on the looper after a delay of 0 or more. Thread: any.
    void post(int64_t delayMillis, ScenarioPlayer::Task task);
    // Puts the listener in the place of what its handler had in the list. Thread: any.
    static void listen(const mindroid::sp<mindroid::RegistrantList>& listeners,
                       const mindroid::sp<mindroid::Handler>& handler,
                       const mindroid::sp<mindroid::MessageCallback>& callback,
                       const mindroid::sp<mindroid::Object>& obj);

private:
    static void answer(const mindroid::sp<mindroid::Message>& reply, const ScenarioAnswer& answer,
                       const Result& result);

    const char* const mTag;
    const Vocabulary& mVocabulary;
    mindroid::Handler& mOwner;
    ScenarioPlayer mPlayer;
};

}  // namespace simulator
