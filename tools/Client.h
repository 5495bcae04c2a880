#pragma once

#include "tools/Mailbox.h"
#include "tools/Request.h"

#include <sys/types.h>

#include <memory>
#include <string>

// Who the service's clients are: of RF there is one, and whoever registers takes its place; of IMS there are two.
namespace subsysctl {

// Responses and indications go to the mailbox from now on. Thread: any.
[[nodiscard]] ndk::ScopedAStatus becomeRfClient(Request::Service& service, const std::shared_ptr<Mailbox>& mailbox);

struct Client {
    enum Kind { UNKNOWN, NONE, SELF, OTHER };
    Kind kind = UNKNOWN;  // one that is dead counts as none
    pid_t pid = 0;
    std::string name;  // of the program; empty where /proc does not tell
};

// The places, as the dump calls them.
inline constexpr const char* RF_PLACE = "rf.response";
inline constexpr const char* IMS_PLACES[] = {"ims.0.response", "ims.1.response"};

// Who has the place, as the dump says.
[[nodiscard]] Client clientIn(const std::string& dump, const std::string& place);

// "pid 12 (name)"
[[nodiscard]] std::string describe(const Client& client);

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
