#include "compliance/Service.h"

#include "compliance/ServiceRun.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>

#include <thread>

namespace compliance {

namespace {

using interface::ISubsys;

Verdict versionVerdict(ISubsys& service) {
    int32_t version = 0;
    const auto status = service.getInterfaceVersion(&version);
    if (!status.isOk()) return failed("a version", status.getDescription());
    const std::string expected = std::to_string(ISubsys::version);
    return version == ISubsys::version ? ok(expected) : failed(expected, std::to_string(version));
}

Verdict hashVerdict(ISubsys& service) {
    std::string hash;
    const auto status = service.getInterfaceHash(&hash);
    if (!status.isOk()) return failed("a hash", status.getDescription());
    return hash == ISubsys::hash ? ok(hash) : failed(ISubsys::hash, hash);
}

Verdict pingVerdict(ISubsys& service) {
    const binder_status_t status = AIBinder_ping(service.asBinder().get());
    return status == STATUS_OK ? ok() : failed("an answer", ndk::ScopedAStatus::fromStatus(status).getDescription());
}

// Nobody knows this command, so that nothing happens; its answer takes no client's place.
Verdict metaVerdict(ServiceRun& run) {
    constexpr int32_t UNKNOWN_COMMAND = 1999;
    const int32_t token = run.newSerial();
    const auto isMine = [token](const Call& call) {
        return call.method == "onIccMetaResp" && call.meta.token == token;
    };
    const auto status = run.service->sendIccMetaCmd({7, token, 2, UNKNOWN_COMMAND, {}}, run.first.meta);
    if (!status.isOk()) return failed("success of the call", status.getDescription());
    if (!run.first.inbox->await(isMine, run.options.limit)) {
        return notChecked("not answered: its component is missing or silent, which is allowed");
    }
    std::this_thread::sleep_for(SERVICE_SETTLE);
    const auto answers = run.first.inbox->find(isMine);
    if (answers.size() != 1) return failed("one answer", std::to_string(answers.size()));
    if (!run.first.inbox->find(answerTo(token)).empty()) return failed("no answer to the RF client", "one");
    const auto& meta = answers.front().meta;
    const bool isRight = meta.id == 7 && !meta.result && meta.type == 0 && meta.data.empty();
    return isRight ? ok("answered without success")
                   : failed("the request's id, no success, type 0, no data", meta.toString());
}

// What another user of the service would notice.
struct Intrusion {
    const char* name;
    const char* what;
};
constexpr Intrusion INTRUSIONS[] = {
    {"requests", "sends each request: settings of clocks, antennas and calls become zero"},
    {"RF clients", "takes the RF client's place, which then gets no answers and events any more"},
    {"IMS clients", "takes both places of IMS clients, where they are free"},
};

void skipIntrusive(Checks& checks) {
    for (const auto& intrusion : INTRUSIONS) {
        checks.check(intrusion.name, "docs/compliance.md#a-service",
                     [&] { return notChecked(std::string("it ") + intrusion.what + "; --intrusive does it"); });
    }
}

void checkIntrusive(ServiceRun& run) {
    const Client& client = run.first;
    const bool isClient = run.checks.prepare("setCallback, setImsOrtcCallback", CALLING, [&] {
        const auto rf = run.service->setCallback(client.response, client.indication);
        const auto ims = run.service->setImsOrtcCallback(client.imsResponse, client.imsIndication);
        if (rf.isOk() && ims.isOk()) return ok();
        return failed("success of the calls", rf.isOk() ? ims.getDescription() : rf.getDescription());
    });
    if (!isClient) return;
    checkRequests(run);
    run.checks.check("RF clients: a meta command is its caller's", CLIENTS, [&] { return metaVerdict(run); });
    checkClients(run);
}

}  // namespace

void checkService(Checks& checks, const ServiceOptions& options) {
    std::shared_ptr<ISubsys> service;
    const bool isServed = checks.prepare("served", CALLING, [&] {
        service = connect(options.name, options.limit);
        const bool isThere = AServiceManager_isDeclared(options.name.c_str());
        return service != nullptr
                   ? ok(options.name)
                   : failed("an ISubsys called " + options.name, isThere ? "one that does not answer" : "none");
    });
    if (!isServed) return;
    ServiceRun run{checks, options, service};
    checks.check("version", CLIENTS, [&] { return versionVerdict(*service); });
    checks.check("hash", CLIENTS, [&] { return hashVerdict(*service); });
    checks.check("ping", CALLING, [&] { return pingVerdict(*service); });
    checkParcels(run);
    checks.check("request sendIccMetaCmd", CLIENTS, [&] { return metaVerdict(run); });
    options.isIntrusive ? checkIntrusive(run) : skipIntrusive(checks);
}

}  // namespace compliance
