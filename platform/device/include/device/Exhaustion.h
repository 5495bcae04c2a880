#pragma once

#include <exception>
#include <new>
#include <system_error>

namespace device {

// For a terminate handler: when memory or threads ran out where no code could go on without, what the exception says;
// null when the program ends for another reason. Thread: any.
[[nodiscard]] inline const char* exhausted() {
    try {
        if (std::current_exception() != nullptr) throw;
    } catch (const std::bad_alloc& error) {
        return error.what();
    } catch (const std::system_error& error) {
        return error.what();
    } catch (...) {
    }
    return nullptr;
}

}  // namespace device
