#pragma once

#include "compliance/Checks.h"
#include "compliance/ReplyProbe.h"
#include "component/Component.h"
#include "component/SubsysInterfaceData.h"

#include <mindroid/HandlerThread.h>
#include <mindroid/Runnable.h>

#include <chrono>
#include <cstring>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace compliance {

constexpr const char* COMPONENT_RULES = "docs/writing-a-component.md#the-library";
constexpr const char* COMPONENT_ANSWERS = "docs/writing-a-component.md#answering";
constexpr const char* COMPONENT_THREADS = "docs/writing-a-component.md#threads";
constexpr const char* COMPONENT_EVENTS = "docs/writing-a-component.md#telling-of-events";

// Where the record stands in a carrier.
template <typename Record>
const void* recordOf(const mindroid::Object& carrier) {
    return &hal::carriedRecord<Record>(carrier);
}

// Whether the object's class overrides the virtual operation of the class that `base` is an object of. The tables of
// operations tell it, since there may be no type information.
template <typename T, typename Operation>
bool overrides(const T& object, const T& base, Operation operation) {
    uintptr_t offset = 0;  // in the table; the lowest bit is not part of it
    std::memcpy(&offset, &operation, sizeof(offset));
    const auto entryOf = [slot = (offset & ~uintptr_t{1}) / sizeof(void*)](const T& each) {
        const uintptr_t* table = nullptr;
        std::memcpy(&table, static_cast<const void*>(&each), sizeof(table));
        return table[slot];
    };
    return entryOf(object) != entryOf(base);
}

// A request to a component, as a check makes it.
struct ComponentRequest {
    std::string name;
    bool isOverridden;
    std::function<void(const mindroid::sp<mindroid::Message>&)> send;
    // Where a success brings a value: whether the object holds it.
    std::function<Verdict(const mindroid::Object&)> checkValue;
};

// What the components of a library are checked with: a looper, as the daemon has one, and listeners. The calling thread
// is in the place of a binder thread.
class ComponentRun {
public:
    ComponentRun(Checks& checks, std::chrono::milliseconds limit);

    // Runs the task on the looper and waits for it.
    void onLooper(const std::function<void()>& task);

    void checkRequest(const ComponentRequest& request);
    // Each from several threads at once.
    void checkTogether(const std::vector<ComponentRequest>& requests);
    // Hands the registration a listener; `check` gets each record that comes.
    void listen(const std::string& event, bool isOverridden,
                const std::function<void(const mindroid::sp<mindroid::MessageCallback>&)>& registration,
                const std::function<Verdict(const mindroid::Object&)>& check);
    // What came until now, and a little later.
    void checkEvents();

    [[nodiscard]] const mindroid::sp<mindroid::Handler>& handler() const { return mHandler; }
    [[nodiscard]] Checks& checks() { return mChecks; }
    [[nodiscard]] std::chrono::milliseconds limit() const { return mLimit; }

private:
    // What came of one event.
    struct Event {
        std::string name;
        bool isOverridden;
        std::mutex mutex;
        size_t count = 0;  // guarded by mutex, as is verdict
        Verdict verdict;   // the first that is not ok
    };

    Verdict runRequest(const ComponentRequest& request, mindroid::sp<mindroid::Object>& value);
    Verdict judge(const ComponentRequest& request, const Reply& reply, int refused);
    static Verdict judge(Event& event);

    Checks& mChecks;
    const std::chrono::milliseconds mLimit;
    const mindroid::sp<mindroid::HandlerThread> mThread = new mindroid::HandlerThread("compliance");
    mindroid::sp<mindroid::Handler> mHandler;
    std::deque<Event> mEvents;
};

}  // namespace compliance
