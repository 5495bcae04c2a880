#pragma once

#include "tools/Mailbox.h"
#include "tools/Output.h"
#include "tools/Request.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_auto_utils.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace subsysctl {

// Exit codes. Of several verbs the first that fails decides.
enum ExitCode : int { OK = 0, ANSWERED_WITH_ERROR = 1, USAGE = 2, NO_SERVICE = 69, EXHAUSTED = 71, NO_ANSWER = 124 };

struct WatchOptions {
    bool rf = true;
    bool ims = false;
    std::optional<double> seconds;  // without it until the end of the server, `count` or SIGINT
    std::optional<size_t> count;
};

// One connection to the service. Each operation reports to the output, errors to stderr, and returns an exit code.
// Used by one thread.
class Session {
public:
    using Service = Request::Service;

    Session(Output& output, std::chrono::milliseconds timeout, int32_t firstSerial);
    ~Session();

    int connect();
    // Each replaces the service's client of its kind; called before the requests that need it.
    int registerRf();
    int registerIms();

    int request(const Request& request);
    int watch(const WatchOptions& options);
    int status();
    // The service's own state, line for line, or what it answers to these arguments of a dump.
    int dump(const std::vector<const char*>& arguments = {});

private:
    int fail(ExitCode code, const std::string& message) const;
    int failCall(const std::string& what, const ndk::ScopedAStatus& status) const;
    int failAnswer(const Request& request) const;
    void watchServer();
    int summarize(size_t printed, Mailbox::Clock::duration took, const WatchOptions& options) const;

    Output& mOutput;
    const std::chrono::milliseconds mTimeout;
    int32_t mNextSerial;
    const std::shared_ptr<Mailbox> mMailbox;
    std::shared_ptr<Service> mService;
    ndk::ScopedAIBinder_DeathRecipient mDeath;
};

}  // namespace subsysctl
