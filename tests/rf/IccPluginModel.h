#pragma once

#include "rf/IccPluginApi.h"
#include "tests/support/Await.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace test {

// What stands behind the functions of the test plugin.
struct IccPluginModel {
    // One entry for each call, as "function(arguments)".
    Recorder<std::string> calls;
    // What each call does after it was recorded; empty does nothing. Set before the first call.
    std::function<void()> onCall;
    spi_cmd_err_code_e code = SPI_CMD_SUCCESS;

    // Delivers an event on the calling thread, to what registered for it last.
    void emit(IccEventType type, const void* data, int size);
    template <typename Record>
    void emit(IccEventType type, const Record& record) {
        emit(type, &record, sizeof(record));
    }

    struct Registration {
        void* context = nullptr;
        IccEventCallback callback = nullptr;
    };
    std::mutex lock;
    std::map<IccEventType, Registration> registrations;
};

// Never destroyed.
IccPluginModel& iccPlugin();

}  // namespace test
