#include "component/RequestTrace.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>

namespace hal {

namespace {

constexpr const char* STAGE_COMPONENT = "component";
constexpr const char* STAGE_REPLY = "reply";
constexpr size_t NUMBER_SIZE = 21;

thread_local RequestScope* tScope = nullptr;

int32_t nextCookie() {
    static std::atomic<uint32_t> sLast = 0;
    const uint32_t cookie = ++sLast;
    return static_cast<int32_t>(cookie != 0 ? cookie : ++sLast);
}

char* append(char* to, const char* end, const char* text) {
    const size_t size = std::min(std::strlen(text), static_cast<size_t>(end - to));
    return std::copy_n(text, size, to);
}

}  // namespace

TraceName::TraceName(const char* text, const char* separator, int64_t number) {
    char* const textEnd = mText + CAPACITY - NUMBER_SIZE;
    char* const end = append(append(mText, textEnd, text), textEnd, separator);
    std::to_chars(end, mText + CAPACITY - 1, number);
}

RequestScope::RequestScope(const char* operation, int32_t id) : mOperation(operation), mId(id), mOuter(tScope) {
    tScope = this;
}

RequestScope::~RequestScope() {
    tScope = mOuter;
    if (mCookie != 0) atrace_end(TRACE_TAG);
}

RequestTrace RequestTrace::begin() {
    RequestTrace trace;
    if (tScope == nullptr || atrace_is_tag_enabled(TRACE_TAG) == 0) return trace;
    trace.mName = TraceName(tScope->mOperation, " #", tScope->mId);
    trace.mCookie = tScope->mCookie = nextCookie();
    atrace_async_begin(TRACE_TAG, trace.mName.c_str(), trace.mCookie);
    atrace_async_begin(TRACE_TAG, STAGE_COMPONENT, trace.mCookie);
    atrace_begin(TRACE_TAG, trace.mName.c_str());
    return trace;
}

int32_t RequestTrace::currentCookie() {
    return tScope != nullptr ? tScope->mCookie : 0;
}

void RequestTrace::beginReply() const {
    if (mCookie == 0) return;
    atrace_async_end(TRACE_TAG, STAGE_COMPONENT, mCookie);
    atrace_async_begin(TRACE_TAG, STAGE_REPLY, mCookie);
}

void RequestTrace::end() const {
    if (mCookie == 0) return;
    atrace_async_end(TRACE_TAG, STAGE_REPLY, mCookie);
    atrace_async_end(TRACE_TAG, mName.c_str(), mCookie);
}

RequestStage::RequestStage(const char* name, int32_t cookie) : mName(name), mCookie(cookie) {
    if (mCookie != 0) atrace_async_begin(TRACE_TAG, mName, mCookie);
}

RequestStage::~RequestStage() {
    if (mCookie != 0) atrace_async_end(TRACE_TAG, mName, mCookie);
}

}  // namespace hal
