#pragma once

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Frame.h"
#include "Poller.h"

namespace binder {

class Greeting;

// Takes connections to the names of this process and hears what each is for. Runs on the poller's thread only.
class Acceptor {
public:
    static Acceptor& instance();

    // Listens for the name from now on, for good. Thread: any.
    [[nodiscard]] bool listen(UniqueFd listener, std::string name);

    void accept(const std::shared_ptr<Pollable>& listener, const std::string& name);
    void greeted(const std::shared_ptr<Greeting>& greeting);
    // One line for each process and reason, a literal.
    void warnOnce(pid_t pid, std::string_view reason);

private:
    Acceptor();
    int tick();
    void admit(UniqueFd fd, const std::string& name);
    void resume();
    void closeSilent(std::chrono::steady_clock::time_point now);

    std::vector<std::shared_ptr<Greeting>> mGreetings;
    std::unordered_map<pid_t, int> mSilent;  // connections of each process that have not said yet
    std::deque<std::pair<pid_t, std::string_view>> mTold;
    std::vector<std::shared_ptr<Pollable>> mPaused;  // listeners, while there are no descriptors left
    std::chrono::steady_clock::time_point mPausedUntil;
};

}  // namespace binder
