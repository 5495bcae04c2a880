#pragma once

#include <memory>

#include "Connection.h"

namespace binder {

class Serving;

// Reads a connection and runs what comes, on this thread, until it is quiet or at its end, somebody needs the thread
// more, or the watchdog took it away.
void serve(std::shared_ptr<Connection> connection, Serving& serving);

}  // namespace binder
