#pragma once

#include "tools/Mailbox.h"
#include "tools/Request.h"

#include <sys/types.h>

#include <memory>
#include <string>

// Who is the service's RF client: there is one, and whoever registers takes its place.
namespace subsysctl {

// Responses and indications go to the mailbox from now on. Thread: any.
[[nodiscard]] ndk::ScopedAStatus becomeRfClient(Request::Service& service, const std::shared_ptr<Mailbox>& mailbox);

struct RfClient {
    enum Kind { UNKNOWN, NONE, SELF, OTHER };
    Kind kind = UNKNOWN;  // one that is dead counts as none
    pid_t pid = 0;
    std::string name;  // of the program; empty where /proc does not tell
};

// As the dump says.
[[nodiscard]] RfClient rfClientIn(const std::string& dump);

// "pid 12 (name)"
[[nodiscard]] std::string describe(const RfClient& client);

// While it lives, this process comes back as the RF client when one that took its place is gone. It looks once a second
// on a thread of its own, which a service that is stopped holds up, and tells the mailbox of each change.
class RfKeeper {
public:
    RfKeeper(std::shared_ptr<Request::Service> service, std::shared_ptr<Mailbox> mailbox);
    ~RfKeeper();
    RfKeeper(const RfKeeper&) = delete;
    RfKeeper& operator=(const RfKeeper&) = delete;

private:
    struct State;
    const std::shared_ptr<State> mState;
};

}  // namespace subsysctl
