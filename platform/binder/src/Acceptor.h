#pragma once

#include "Poller.h"

#include <sys/types.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace binder {

class Greeting;

// Takes connections to the names of this process and answers their hellos. Thread: the I/O thread, where nothing else
// is said.
class Acceptor {
public:
    static Acceptor& instance();

    // Listens for the name from now on, instead of where it listened before. False, with errno, when the system
    // refuses. Thread: any; one at a time.
    [[nodiscard]] bool listen(UniqueFd listener, const std::string& name);

    // No connection can be taken for now: tries again after a while.
    void pause(PollKey listener);
    void add(const std::shared_ptr<Greeting>& greeting);
    void remove(const Greeting& greeting);

private:
    [[nodiscard]] int tick();

    std::map<std::string, PollKey> mListening;          // guarded by whoever calls listen()
    std::vector<std::shared_ptr<Greeting>> mGreetings;  // the oldest first
    std::vector<PollKey> mPaused;                       // listeners, while there are no descriptors left
    std::chrono::steady_clock::time_point mPausedUntil;
};

}  // namespace binder
