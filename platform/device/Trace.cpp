// The tracing calls of a simulated device. A device build leaves this file out and links the device's libcutils.
#include "TraceWriter.h"

#include <cutils/trace.h>

using device::MarkKind;

namespace {

device::trace::TraceWriter* writerFor(uint64_t tag) {
    return tag == ATRACE_TAG_NEVER ? nullptr : device::trace::writer();
}

}  // namespace

uint64_t atrace_is_tag_enabled(uint64_t tag) {
    return writerFor(tag) != nullptr ? tag : 0;
}

void atrace_begin(uint64_t tag, const char* name) {
    if (auto* writer = writerFor(tag)) writer->begin(name);
}

void atrace_end(uint64_t tag) {
    if (auto* writer = writerFor(tag)) writer->end();
}

void atrace_async_begin(uint64_t tag, const char* name, int32_t cookie) {
    if (auto* writer = writerFor(tag)) writer->asyncBegin(name, cookie);
}

void atrace_async_end(uint64_t tag, const char* name, int32_t cookie) {
    if (auto* writer = writerFor(tag)) writer->asyncEnd(name, cookie);
}

void atrace_instant(uint64_t tag, const char* name) {
    if (auto* writer = writerFor(tag)) writer->mark(MarkKind::INSTANT, name);
}

void atrace_int(uint64_t tag, const char* name, int32_t value) {
    atrace_int64(tag, name, value);
}

void atrace_int64(uint64_t tag, const char* name, int64_t value) {
    if (auto* writer = writerFor(tag)) writer->mark(MarkKind::COUNTER, name, value);
}
