#include "simulator/ComponentPlayer.h"

#include "component/SubsysComponent.h"

#include <mindroid/Log.h>
#include <mindroid/Runnable.h>
#include <mindroid/SystemClock.h>

#include <utility>

using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
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
    const uint64_t due = mindroid::SystemClock::uptimeMillis() + static_cast<uint64_t>(delayMillis);
    mOwner.sendMessageAtTime(mOwner.obtainMessage(new Runnable(std::move(task))), due);
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

void ComponentPlayer::listen(const sp<RegistrantList>& listeners, const sp<Handler>& handler,
                             const sp<MessageCallback>& callback, const sp<Object>& obj) {
    listeners->remove(handler);
    listeners->add(new Registrant(handler, callback, obj));
}

void ComponentPlayer::answer(const sp<Message>& reply, const ScenarioAnswer& answer, const Result& result) {
    const auto error = static_cast<hal::SUBSYS_Errno>(answer.code.value_or(0));
    const sp<Object> value = result && !answer.null ? result(answer) : nullptr;
    hal::SubsysComponent::sendResponse(reply, error, value);
    if (answer.twice) hal::SubsysComponent::sendResponse(reply, error, value);
}

}  // namespace simulator
