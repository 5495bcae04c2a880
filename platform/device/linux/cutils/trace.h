#pragma once

#include <cstdint>

// The tracing calls of a device. On Linux the marks go to the recorder's file (device/Recorder.h); without a recorder a
// call returns at once. But for the first mark of a thread, a call takes no lock, allocates nothing and makes no system
// call. Names are bytes, of which 72 are kept; null is an empty name. All: any.

// Marks of every tag are recorded, but those of ATRACE_TAG_NEVER. The bits are a device's.
#define ATRACE_TAG_NEVER 0ULL
#define ATRACE_TAG_ALWAYS (1ULL << 0)
#define ATRACE_TAG_HAL (1ULL << 11)
#define ATRACE_TAG_APP (1ULL << 12)
#define ATRACE_TAG_AIDL (1ULL << 24)

// The tag of the macros below, which a source file defines before it includes this.
#ifndef ATRACE_TAG
#define ATRACE_TAG ATRACE_TAG_NEVER
#endif

extern "C" {

// Not 0 while marks of the tag are recorded: for a caller that has to build a name.
uint64_t atrace_is_tag_enabled(uint64_t tag);

// A section of the calling thread. Sections nest; an end belongs to the thread's last open section.
void atrace_begin(uint64_t tag, const char* name);
void atrace_end(uint64_t tag);

// A section that may end on another thread: name and cookie together tell it from others that are open.
void atrace_async_begin(uint64_t tag, const char* name, int32_t cookie);
void atrace_async_end(uint64_t tag, const char* name, int32_t cookie);

void atrace_instant(uint64_t tag, const char* name);

// The new value of a counter.
void atrace_int(uint64_t tag, const char* name, int32_t value);
void atrace_int64(uint64_t tag, const char* name, int64_t value);
}

#define ATRACE_ENABLED() atrace_is_tag_enabled(ATRACE_TAG)
#define ATRACE_BEGIN(name) atrace_begin(ATRACE_TAG, name)
#define ATRACE_END() atrace_end(ATRACE_TAG)
#define ATRACE_ASYNC_BEGIN(name, cookie) atrace_async_begin(ATRACE_TAG, name, cookie)
#define ATRACE_ASYNC_END(name, cookie) atrace_async_end(ATRACE_TAG, name, cookie)
#define ATRACE_INSTANT(name) atrace_instant(ATRACE_TAG, name)
#define ATRACE_INT(name, value) atrace_int(ATRACE_TAG, name, value)
#define ATRACE_INT64(name, value) atrace_int64(ATRACE_TAG, name, value)
