#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

// What a kernel's binder would add to the trace; platform/device/README.md has the names. Thread: any.
namespace binder {

// The calling thread's part in a call, from here to the end of the scope.
class CallSection {
public:
    // `text` is "call to ", "call from " or "oneway from ".
    CallSection(std::string_view text, pid_t peer, uint32_t code, size_t size, uint64_t place = 0);
    ~CallSection();
    CallSection(const CallSection&) = delete;
    CallSection& operator=(const CallSection&) = delete;
};

// A oneway call is on its way. `place`: where it ends in the channel, by which it is known again at the other end.
void markSent(pid_t peer, uint32_t code, size_t size, uint64_t place);

}  // namespace binder
