#include "compliance/ServiceRun.h"

#include <string_view>
#include <thread>
#include <tuple>
#include <type_traits>

namespace compliance {

namespace {

using interface::IImsOrtcResponse;
using interface::ISubsys;
using interface::ISubsysResponse;

// A process of this name is on nobody's list, so that nothing is killed.
constexpr const char* UNLISTED = "subsys-compliance";

template <class T>
void fill(const std::string& name, T& argument, int32_t serial) {
    if constexpr (std::is_same_v<T, int32_t>) {
        if (name == "serial") argument = serial;
        if (name == "pid") argument = getpid();
    } else if constexpr (std::is_same_v<T, std::string>) {
        argument = UNLISTED;
    } else if constexpr (std::is_same_v<T, interface::IccReqInfo>) {
        argument.timeout = 1000;
    }
}

template <class Method>
ndk::ScopedAStatus send(ISubsys& service, const Method& method, int32_t serial) {
    typename Method::Arguments arguments{};
    size_t index = 0;
    return std::apply(
        [&](auto&... each) {
            (fill(method.arguments[index++], each, serial), ...);
            return (service.*method.call)(each...);
        },
        arguments);
}

Verdict judge(const std::string& method, const std::vector<Call>& answers) {
    // This one needs no component.
    if (answers.empty() && method == "killProcess") return failed("an answer", "none");
    if (answers.empty()) return notChecked("not answered: its component is missing or silent, which is allowed");
    if (answers.size() > 1) return failed("one answer", std::to_string(answers.size()));
    const auto& [name, info, meta] = answers.front();
    if (name != method + "Response") return failed(method + "Response", name);
    if (info.type != 0) return failed("type 0 in the answer", std::to_string(info.type));
    const auto error = static_cast<int32_t>(info.error);
    if (error < 0 || error > 9) return failed("an error in 0..9", std::to_string(error));
    return ok("answered with error " + std::to_string(error));
}

template <class Method>
Verdict checkRequest(ServiceRun& run, const Method& method) {
    const int32_t serial = run.newSerial();
    const auto status = send(*run.service, method, serial);
    if (!status.isOk()) return failed("success of the call", status.getDescription());
    return judge(method.name, takeAnswers(run.first, serial, run.options.limit));
}

}  // namespace

Inbox::Matches answerTo(int32_t serial) {
    return [serial](const Call& call) { return isAnswer(call) && call.info.serial == serial; };
}

std::vector<Call> takeAnswers(const Client& client, int32_t serial, std::chrono::milliseconds limit) {
    if (client.inbox->await(answerTo(serial), limit)) std::this_thread::sleep_for(SERVICE_SETTLE);
    return client.inbox->find(answerTo(serial));
}

void checkRequests(ServiceRun& run) {
    subsys_stubs::forEachMethod<ISubsys>([&](const auto& method) {
        const std::string answer = std::string(method.name) + "Response";
        if (!subsys_stubs::hasMethod<ISubsysResponse>(answer) && !subsys_stubs::hasMethod<IImsOrtcResponse>(answer))
            return;
        run.checks.check(std::string("request ") + method.name, CALLING, [&] { return checkRequest(run, method); });
    });
}

}  // namespace compliance
