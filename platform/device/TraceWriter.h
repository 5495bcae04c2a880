#pragma once

#include "TraceLayout.h"

#include <device/TraceFile.h>

#include <cstddef>
#include <cstdint>

namespace device::trace {

// Writes marks into a mapped file; see TraceLayout.h for how. One for a process, never destroyed: threads mark until
// the process ends. All: any.
class TraceWriter {
public:
    explicit TraceWriter(File& file) : mFile(file) {}
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void begin(const char* name);
    void end();
    void asyncBegin(const char* name, int32_t cookie);
    void asyncEnd(const char* name, int32_t cookie);
    // A mark of the other kinds.
    void mark(MarkKind kind, const char* name, int64_t value = 0);

private:
    void enterThread();
    Slot make(MarkKind kind, const char* name, int64_t value);
    void record(const Slot& mark);
    bool takeChunk();
    // False where there is no place.
    bool open(const Slot& mark);
    bool close(const Slot& mark);

    File& mFile;
};

// The writer of this process, or null where nothing is recorded.
[[nodiscard]] TraceWriter* writer();
// To be called before threads mark, or in the one thread of a forked child.
void setWriter(TraceWriter* writer);

}  // namespace device::trace
