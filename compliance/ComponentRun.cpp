#include "compliance/ComponentRun.h"

#include <thread>
#include <utility>

using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::sp;
using std::chrono::milliseconds;

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;

constexpr milliseconds SETTLE{300};  // in which late events and second answers come
constexpr milliseconds HOLD_LIMIT{300};
constexpr int BINDER_THREADS = 4;

Verdict noAnswer(const Reply& reply, milliseconds limit) {
    return failed("an answer", reply.isDropped ? "the reply was dropped without one"
                                               : "none in " + std::to_string(limit.count()) + " ms");
}

}  // namespace

ComponentRun::ComponentRun(Checks& checks, milliseconds limit) : mChecks(checks), mLimit(limit) {
    startLogWatch();
    mThread->start();
    mHandler = new mindroid::Handler(mThread->getLooper());
}

void ComponentRun::onLooper(const std::function<void()>& task) {
    std::promise<void> done;
    mHandler
        ->obtainMessage(new mindroid::Runnable([&] {
            task();
            done.set_value();
        }))
        ->sendToTarget();
    done.get_future().wait();
}

// ---- Requests

void ComponentRun::checkRequest(const ComponentRequest& request) {
    sp<Object> value;
    mChecks.check(request.name, COMPONENT_ANSWERS, [&] { return runRequest(request, value); });
    if (!request.checkValue) return;
    mChecks.check(request.name + ": the value holds its record", COMPONENT_ANSWERS,
                  [&] { return value ? request.checkValue(*value) : notChecked("no value came"); });
}

Verdict ComponentRun::runRequest(const ComponentRequest& request, sp<Object>& value) {
    if (!request.isOverridden) return notChecked("the component does not have it; nobody answers the client");
    const int refused = refusedMessages();
    ReplyProbe probe(mHandler);
    const auto start = Clock::now();
    request.send(probe.takeMessage());
    const auto held = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    if (probe.await(mLimit).answers > 0) std::this_thread::sleep_for(SETTLE);
    const Reply reply = probe.get();
    if (reply.error == 0) value = reply.value;
    if (held <= HOLD_LIMIT) return judge(request, reply, refusedMessages() - refused);
    return failed("a return within " + std::to_string(HOLD_LIMIT.count()) + " ms: it holds the calling thread",
                  std::to_string(held.count()) + " ms");
}

Verdict ComponentRun::judge(const ComponentRequest& request, const Reply& reply, int refused) {
    if (reply.answers == 0) return noAnswer(reply, mLimit);
    if (reply.answers + refused > 1) return failed("one answer", "a second one");
    if (request.checkValue && reply.error == 0 && !reply.value) return failed("a value with the success", "none");
    return ok("answered with error " + std::to_string(reply.error));
}

void ComponentRun::checkTogether(const std::vector<ComponentRequest>& requests) {
    mChecks.check("requests from " + std::to_string(BINDER_THREADS) + " threads at once", COMPONENT_THREADS, [&] {
        const int refused = refusedMessages();
        std::deque<ReplyProbe> probes;
        std::vector<const ComponentRequest*> asked;
        std::vector<std::thread> threads;
        for (int i = 0; i < BINDER_THREADS; ++i) {
            for (const auto& request : requests) {
                if (!request.isOverridden) continue;
                ReplyProbe& probe = probes.emplace_back(mHandler);
                asked.push_back(&request);
                threads.emplace_back([&] { request.send(probe.takeMessage()); });
            }
        }
        for (auto& thread : threads) thread.join();
        if (probes.empty()) return notChecked("the component has no request");
        for (const auto& probe : probes) {
            const Reply reply = probe.await(mLimit);
            if (reply.answers == 0) return noAnswer(reply, mLimit);
        }
        std::this_thread::sleep_for(SETTLE);
        for (size_t i = 0; i < probes.size(); ++i) {
            Verdict verdict = judge(*asked[i], probes[i].get(), refusedMessages() - refused);
            if (verdict.kind != Verdict::OK) return verdict;
        }
        return ok();
    });
}

// ---- Events

void ComponentRun::listen(const std::string& name, bool isOverridden,
                          const std::function<void(const sp<MessageCallback>&)>& registration,
                          const std::function<Verdict(const Object&)>& check) {
    Event& event = mEvents.emplace_back();
    event.name = name;
    event.isOverridden = isOverridden;
    registration(new MessageCallback([&event, check](const sp<Message>& message) {
        const Verdict verdict = message->obj ? check(*message->obj) : failed("an object with the record", "none");
        const std::lock_guard lock(event.mutex);
        ++event.count;
        if (event.verdict.kind == Verdict::OK) event.verdict = verdict;
    }));
}

void ComponentRun::checkEvents() {
    std::this_thread::sleep_for(SETTLE);
    for (auto& event : mEvents) {
        mChecks.check("event " + event.name, COMPONENT_EVENTS, [&] { return judge(event); });
    }
}

Verdict ComponentRun::judge(Event& event) {
    const std::lock_guard lock(event.mutex);
    if (!event.isOverridden) return notChecked("the component does not have it");
    if (event.count == 0) return notChecked("none came");
    const std::string came = std::to_string(event.count) + " came";
    if (event.verdict.kind == Verdict::NOT_CHECKED) return notChecked(came + "; " + event.verdict.seen);
    return event.verdict.kind == Verdict::OK ? ok(came) : event.verdict;
}

}  // namespace compliance
