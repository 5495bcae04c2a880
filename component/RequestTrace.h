#pragma once

#include <cutils/trace.h>

#include <cstddef>
#include <cstdint>

namespace hal {

inline constexpr uint64_t TRACE_TAG = ATRACE_TAG_HAL;

// Marks of the library in the trace. A request is an asynchronous section from the bridge to the response, named after
// the operation with the client's serial or token, as "getSwtpStatus #7". Inside of it, with the same cookie, stands a
// section for what has the request at the moment: "component", in it "plugin", then "reply".

// A section of the calling thread, from here to the end of the scope. The name is borrowed.
class TraceSection {
public:
    explicit TraceSection(const char* name) { atrace_begin(TRACE_TAG, name); }
    ~TraceSection() { atrace_end(TRACE_TAG); }
    TraceSection(const TraceSection&) = delete;
    TraceSection& operator=(const TraceSection&) = delete;
};

// A text and a number, for the name of a mark.
class TraceName {
public:
    TraceName() = default;
    TraceName(const char* text, const char* separator, int64_t number);

    [[nodiscard]] const char* c_str() const { return mText; }

private:
    static constexpr size_t CAPACITY = 56;
    char mText[CAPACITY] = {};
};

// The request that the calling thread serves, from here to the end of the scope: it gives the bridge the name.
class RequestScope {
public:
    // `operation` is borrowed; `id` is the client's serial or token.
    RequestScope(const char* operation, int32_t id);
    ~RequestScope();
    RequestScope(const RequestScope&) = delete;
    RequestScope& operator=(const RequestScope&) = delete;

private:
    friend class RequestTrace;

    const char* const mOperation;
    const int32_t mId;
    RequestScope* const mOuter;
    // 0 until the bridge has taken the request over.
    int32_t mCookie = 0;
};

// One request on its way, from the bridge on. Without a scope, or while nobody records, it marks nothing. Thread: any.
class RequestTrace {
public:
    // The request of the calling thread's scope goes to its component.
    [[nodiscard]] static RequestTrace begin();
    // The cookie of the request that the calling thread hands to its component, or 0.
    [[nodiscard]] static int32_t currentCookie();

    // The reply came back, and the response is called.
    void beginReply() const;
    void end() const;

private:
    TraceName mName;
    int32_t mCookie = 0;
};

// A stage of the request with the cookie, from here to the end of the scope; none for 0. The name is borrowed.
class RequestStage {
public:
    RequestStage(const char* name, int32_t cookie);
    ~RequestStage();
    RequestStage(const RequestStage&) = delete;
    RequestStage& operator=(const RequestStage&) = delete;

private:
    const char* const mName;
    const int32_t mCookie;
};

}  // namespace hal
