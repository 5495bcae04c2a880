#pragma once

#include "compliance/Verdict.h"
#include "rf/IccPluginApi.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace compliance {

// The events that a plugin reports. One for the process, never destroyed: they may come until its end.
class PluginEvents {
public:
    static constexpr size_t TYPES = ICC_EVENT_COEX_ANT_CHANGED;

    [[nodiscard]] static PluginEvents& get();

    // What to register for a type. Each type has a context of its own.
    [[nodiscard]] void* contextOf(IccEventType type) { return &mKinds.at(type - 1); }
    static void onEvent(IccEventType type, void* context, void* data, int size);

    // The plugin is being called, from here to the end of the scope.
    struct CallScope {
        CallScope() { get().mInCall = true; }
        ~CallScope() { get().mInCall = false; }
        CallScope(const CallScope&) = delete;
        CallScope& operator=(const CallScope&) = delete;
    };

    // "ICC_EVENT_STATE_CHANGED"
    [[nodiscard]] static const char* nameOf(IccEventType type);
    [[nodiscard]] Verdict verdict(IccEventType type) const;
    // On those of no type that was registered.
    [[nodiscard]] Verdict othersVerdict() const;

private:
    // What came of one type.
    struct Kind {
        size_t count = 0;
        size_t duringCalls = 0;
        Verdict fault;  // the first
    };

    void take(IccEventType type, const void* context, const void* data, int size);

    std::atomic<bool> mInCall = false;
    mutable std::mutex mMutex;
    std::array<Kind, TYPES> mKinds;  // guarded by mMutex, as is mOthers
    std::string mOthers;
};

}  // namespace compliance
