#pragma once

#include "Frame.h"

namespace binder {

// This process's own random name, the same as long as it lives. Thread: any.
[[nodiscard]] const Key& processKey();

}  // namespace binder
