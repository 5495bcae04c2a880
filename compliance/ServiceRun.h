#pragma once

#include "compliance/Checks.h"
#include "compliance/Client.h"
#include "compliance/Service.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace compliance {

constexpr const char* CALLING = "docs/writing-a-client.md#calling";
constexpr const char* CLIENTS = "docs/writing-a-client.md#what-to-know";
constexpr const char* BINDER = "docs/binder.md#calls-that-are-refused";

// In which a second answer comes, or one that should not.
constexpr std::chrono::milliseconds SERVICE_SETTLE{100};

// One run over one connection.
struct ServiceRun {
    [[nodiscard]] int32_t newSerial() { return ++lastSerial; }

    Checks& checks;
    const ServiceOptions& options;
    const std::shared_ptr<interface::ISubsys> service;
    // The RF client and an IMS client, for the whole run.
    const Client first{};
    // Others have other serials.
    int32_t lastSerial = getpid() * 1000;
};

// Calls that are no call of a method.
void checkParcels(ServiceRun& run);
// Each request. Intrusive.
void checkRequests(ServiceRun& run);
// Several clients, and what comes to whom. Intrusive.
void checkClients(ServiceRun& run);

// The answer to the request with the serial, to this client.
[[nodiscard]] Inbox::Matches answerTo(int32_t serial);
// Waits for it, and a little longer for what should not come.
[[nodiscard]] std::vector<Call> takeAnswers(const Client& client, int32_t serial, std::chrono::milliseconds limit);

}  // namespace compliance
