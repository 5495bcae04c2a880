#pragma once

#include <android/log.h>

// Writes the process's log to stderr from now on, from this priority up: one line a message, written in one piece, with
// time, thread, level and tag, at most PIPE_BUF bytes of it. Control characters are escaped. A pipe or a socket that is
// full because nobody reads holds nobody up: its lines are dropped, and how many were is said when it has room again.
// Called once, before other threads log.
void startStderrLog(android_LogPriority lowest);
