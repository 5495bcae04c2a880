#pragma once

#include "tools/Client.h"
#include "tools/ExitCode.h"
#include "tools/Mailbox.h"
#include "tools/Output.h"
#include "tools/Request.h"
#include "tools/Watch.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_auto_utils.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace subsysctl {

// One connection to the service. Each operation reports to the output and returns an exit code. Used by one thread.
class Session {
public:
    using Service = Request::Service;

    // With `takeOver` it becomes the RF client also in place of one that is alive.
    Session(Output& output, std::chrono::milliseconds timeout, int32_t firstSerial, bool takeOver);
    ~Session();

    [[nodiscard]] Output& output() { return mOutput; }
    // What is reported from now on concerns this verb.
    void begin(std::string verb) {
        mVerb = std::move(verb);
        mSerial.reset();
    }
    int connect();
    // Called before what needs it; does it once.
    int registerRf();
    int registerIms();
    // What a verb says that only registers: "rf" or "ims".
    int showRegistered(const char* client);

    int request(const Request& request);
    int watch(const WatchOptions& options);
    int status();
    // The service's own state, line for line, or what it answers to these arguments of a dump.
    int dump(const std::vector<const char*>& arguments = {});

private:
    // {"error":"noAnswer","verb":...,"message":...,"serial":...}
    [[nodiscard]] Json error(const char* kind, const std::string& message) const;
    int fail(ExitCode code, const Json& problem);
    int failCall(const ndk::ScopedAStatus& status);
    int failAnswer(const Request& request);
    [[nodiscard]] std::string whyUnanswered(Needs needs);
    int failLookup(const std::string& name, bool isDeclared);
    [[nodiscard]] Output::Line lateCall() const;
    void watchServer();
    int refuseRf(const Client& client);
    int refuseIms(const Client& first, const Client& second);
    void noteTakeOver(const Client& client);

    Output& mOutput;
    const std::chrono::milliseconds mTimeout;
    int32_t mNextSerial;
    const bool mTakeOver;
    bool mIsRfClient = false;
    bool mIsImsClient = false;
    std::string mVerb;
    std::optional<int32_t> mSerial;  // of its request
    const std::shared_ptr<Mailbox> mMailbox;
    std::shared_ptr<Service> mService;
    ndk::ScopedAIBinder_DeathRecipient mDeath;
};

}  // namespace subsysctl
