#pragma once

#include <android/binder_auto_utils.h>

#include <string>

namespace binder {

// The object that this process registered under the name, or null. Thread: any.
[[nodiscard]] ndk::SpAIBinder registeredHere(const std::string& name);

}  // namespace binder
