#include "tools/Diagnosis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace subsysctl {
namespace {

using device::MarkKind;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t SECOND = 1'000'000'000;
constexpr int32_t BINDER = 11;

// A daemon with which all is well, at second 100.
Evidence wellEvidence() {
    Evidence evidence;
    evidence.service = "name";
    evidence.folder = "/names";
    evidence.isServed = true;
    evidence.now = 100 * SECOND;
    evidence.dump = DumpLines{{"component.0", "type 0, instance 0"},
                              {"component.1", "type 21, instance 0"},
                              {"rf.response", "pid 5, alive"},
                              {"looper.0", "subsysd, thread 10, 0 waiting, runs hal::X for 900 ms"},
                              {"peer.5", "0 calls waiting, 0 bytes unread, 0 undelivered"}};
    evidence.trace.emplace();
    evidence.trace->pid = 10;
    evidence.trace->threadNames[BINDER] = "binder";
    evidence.daemon = ProcessState{10, "subsysd", 'S', 0};
    evidence.peers[5] = ProcessState{5, "client", 'S', 0};
    return evidence;
}

void mark(Evidence& evidence, int64_t second, MarkKind kind, const std::string& name, int64_t value = 0) {
    evidence.trace->marks.push_back({second * SECOND, BINDER, kind, value, name});
}
void open(Evidence& evidence, int64_t second, MarkKind kind, const std::string& name, int64_t value = 0) {
    mark(evidence, second, kind, name, value);
    evidence.trace->open.push_back(evidence.trace->marks.back());
}

std::vector<std::string> textsOf(const Evidence& evidence) {
    std::vector<std::string> texts;
    for (const Finding& each : diagnose(evidence)) {
        texts.push_back((each.level == Finding::Level::FAULT ? "" : "note: ") + each.cause + ": " + each.text);
    }
    return texts;
}

TEST(Diagnosis, Look_WhenOneThingIsWrong_ThenOneLine) {
    const std::pair<std::function<void(Evidence&)>, std::string> cases[] = {
        {[](auto& e) { e.isServed = false; }, "notServed: subsysd, pid 10, runs but does not serve name in /names"},
        {[](auto& e) {
             e.daemon = ProcessState{10, "subsysd", 't', 7};
         },
         "debugged: subsysd, pid 10, is held by a debugger, process 7"},
        {[](auto& e) {
             e.dump.reset();
             e.daemon.reset();
         },
         "noAnswer: the process that serves name did not answer in time"},
        {[](auto& e) { e.dump.reset(); }, "noAnswer: subsysd, pid 10, did not answer in time"},
        {[](auto& e) { open(e, 90, MarkKind::BEGIN, "call from 5, code 3, 8 bytes"); },
         "componentHangs: the service has not returned from call from 5, code 3, 8 bytes for 10.0 s (thread 11, "
         "binder)"},
        {[](auto& e) {
             open(e, 89, MarkKind::BEGIN, "call from 5, code 3, 8 bytes");
             open(e, 90, MarkKind::BEGIN, "setCallInfo #1");
         },
         "componentHangs: the component has not returned from setCallInfo #1 for 10.0 s (thread 11, binder)"},
        {[](auto& e) { open(e, 97, MarkKind::BEGIN, "plugin iccGetState"); },
         "note: pluginHangs: the plugin has not returned from iccGetState for 3.0 s (thread 11, binder)"},
        {[](auto& e) { (*e.dump)["looper.0"] = "subsysd, thread 10, 3 waiting, runs hal::X for 1500 ms"; },
         "looperBusy: the looper of subsysd, thread 10, 3 waiting, is inside hal::X for 1.5 s"},
        {[](auto& e) { (*e.dump)["peer.5"] = "0 calls waiting, 9 bytes unread, 4 undelivered"; },
         "undelivered: client process 5 missed 4 calls"},
        {[](auto& e) {
             (*e.dump)["plugin.0"] = "libiccapis, /a.so, not open";
             mark(e, 90, MarkKind::ASYNC_BEGIN, "getIccState #1", 1);
             mark(e, 90, MarkKind::ASYNC_BEGIN, "plugin", 1);
             mark(e, 91, MarkKind::ASYNC_END, "plugin", 1);
             mark(e, 91, MarkKind::ASYNC_END, "getIccState #1", 1);
         },
         "pluginNotOpen: a request needed the plugin: libiccapis, /a.so, not open"},
        {[](auto& e) { e.peers[5].state = 'T'; }, "clientStopped: client process 5 is stopped, 0 bytes unread"},
        {[](auto& e) { e.dump->erase("component.1"); },
         "componentMissing: there is no component of type 21: no IMS request is answered"},
        {[](auto& e) { (*e.dump)["ims.1.response"] = "pid 6, dead"; },
         "clientDead: ims.1.response is that of a dead client: pid 6, dead"},
        {[](auto& e) { e.serial = 3; }, "noRequest: there is no request #3 in the recording"},
    };
    EXPECT_THAT(textsOf(wellEvidence()), IsEmpty());
    for (const auto& [spoil, text] : cases) {
        Evidence evidence = wellEvidence();
        spoil(evidence);
        EXPECT_THAT(textsOf(evidence), ElementsAre(text));
    }
}

TEST(Diagnosis, Look_WhenRequestsWait_ThenWhatHasThemAndOneLineForThoseInOnePlace) {
    Evidence evidence = wellEvidence();
    for (int cookie : {1, 2, 3}) {
        open(evidence, 10 + cookie, MarkKind::ASYNC_BEGIN, "getIccState #" + std::to_string(cookie), cookie);
        open(evidence, 10 + cookie, MarkKind::ASYNC_BEGIN, "component", cookie);
    }
    open(evidence, 20, MarkKind::ASYNC_BEGIN, "plugin", 1);
    open(evidence, 20, MarkKind::BEGIN, "plugin iccGetState");
    open(evidence, 99, MarkKind::ASYNC_BEGIN, "getIccState #4", 4);
    evidence.now -= SECOND / 2;  // the last one waits for half a second
    EXPECT_THAT(
        textsOf(evidence),
        ElementsAre("pluginHangs: the plugin has not returned from iccGetState for 79.5 s (thread 11, binder)",
                    "waitsForPlugin: getIccState #1 waits for 88.5 s: it is inside the plugin",
                    "waitsBehindPlugin: getIccState #2 waits for 87.5 s, and 1 more of its kind do: it waits for the "
                    "plugin"));
}

// The death of a client is noticed on a looper, maybe after its successor has registered.
TEST(Diagnosis, Look_WhenTheRfClientGoesWhileARequestWaits_ThenWhereItsAnswerWent) {
    const struct {
        std::vector<std::string> marks;
        const char* response;
        std::vector<std::string> texts;
    } cases[] = {
        {{"RF client died"},
         "none",
         {"clientLost: getIccState #1 was answered 50.0 s ago, but the RF client ended 59.0 s ago",
          "note: noClient: the RF client ended 59.0 s ago, and none has registered since"}},
        {{"RF client died", "RF client set"},
         "pid 6, alive",
         {"clientLost: getIccState #1 was answered 50.0 s ago, but the RF client was replaced 58.0 s ago"}},
        {{"RF client set", "RF client died"},
         "pid 6, alive",
         {"clientLost: getIccState #1 was answered 50.0 s ago, but the RF client was replaced 59.0 s ago"}},
        {{"IMS client set", "ICC event 1"}, "pid 5, alive", {}},
    };
    for (const auto& each : cases) {
        Evidence evidence = wellEvidence();
        (*evidence.dump)["rf.response"] = each.response;
        mark(evidence, 40, MarkKind::ASYNC_BEGIN, "getIccState #1", 1);
        int64_t second = 41;
        for (const auto& name : each.marks) mark(evidence, second++, MarkKind::INSTANT, name);
        mark(evidence, 50, MarkKind::ASYNC_END, "getIccState #1", 1);
        EXPECT_EQ(textsOf(evidence), each.texts) << each.marks.front();
    }
}

}  // namespace
}  // namespace subsysctl
