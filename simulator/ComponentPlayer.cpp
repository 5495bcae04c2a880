#include "simulator/ComponentPlayer.h"

#include <utility>

#include "component/SubsysComponent.h"

#include <mindroid/Log.h>
#include <mindroid/Runnable.h>

using mindroid::Message;
using mindroid::Object;
using mindroid::Runnable;
using mindroid::sp;

namespace simulator {

ComponentPlayer::ComponentPlayer(const char* tag, const Vocabulary& vocabulary, mindroid::Handler& owner,
                                 ScenarioPlayer::Deliver deliver)
    : mTag(tag),
      mVocabulary(vocabulary),
      mOwner(owner),
      mPlayer(
          vocabulary, [this](int64_t delayMillis, ScenarioPlayer::Task task) { post(delayMillis, std::move(task)); },
          [this, deliver = std::move(deliver)](const ScenarioEvent& event) {
              mindroid::Log::d(mTag, "event %s", mVocabulary.events[event.kind].name);
              deliver(event);
          }) {}

void ComponentPlayer::start() {
    mPlayer.start();
}

Reaction ComponentPlayer::react(size_t request) {
    mindroid::Log::d(mTag, "%s", mVocabulary.requests[request].name);
    return mPlayer.react(request);
}

void ComponentPlayer::play(const Reaction& reaction) {
    mPlayer.play(reaction);
}

void ComponentPlayer::post(int64_t delayMillis, ScenarioPlayer::Task task) {
    const sp<Runnable> runnable = new Runnable(std::move(task));
    mOwner.postDelayed(runnable, delayMillis);
}

void ComponentPlayer::serve(size_t request, const sp<Message>& reply, Effect effect, Result result) {
    post(0, [this, request, reply, effect = std::move(effect), result = std::move(result)] {
        const Reaction reaction = react(request);
        const auto finish = [this, reply, reaction, effect, result] {
            if (!reaction.answer.silent) answer(reply, reaction.answer, result);
            if (!reaction.answer.silent && reaction.isSuccess() && effect) effect();
            play(reaction);
        };
        if (reaction.delayMillis() == 0) return finish();
        post(reaction.delayMillis(), finish);
    });
}

void ComponentPlayer::answer(const sp<Message>& reply, const ScenarioAnswer& answer, const Result& result) {
    const auto error = static_cast<hal::SUBSYS_Errno>(answer.code.value_or(0));
    const sp<Object> value = result && !answer.null ? result(answer) : nullptr;
    hal::SubsysComponent::sendResponse(reply, error, value);
    if (answer.twice) hal::SubsysComponent::sendResponse(reply, error, value);
}

}  // namespace simulator
