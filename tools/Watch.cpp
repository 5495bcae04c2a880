#include "tools/Watch.h"

#include "tools/Text.h"

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace subsysctl {

namespace {

using Clock = Mailbox::Clock;
using Nanos = std::chrono::nanoseconds;

// While it lives, SIGINT and SIGTERM end the watch and not the process.
class Interrupt {
public:
    explicit Interrupt(Mailbox& mailbox) {
        sMailbox = &mailbox;
        struct sigaction action {};
        action.sa_handler = [](int) { sMailbox->interrupt(); };
        action.sa_flags = SA_RESTART;
        sigaction(SIGINT, &action, &mOldInt);
        sigaction(SIGTERM, &action, &mOldTerm);
    }
    ~Interrupt() {
        sigaction(SIGINT, &mOldInt, nullptr);
        sigaction(SIGTERM, &mOldTerm, nullptr);
    }
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

private:
    static inline Mailbox* sMailbox = nullptr;
    struct sigaction mOldInt {};
    struct sigaction mOldTerm {};
};

std::string counted(size_t indications) {
    return std::to_string(indications) + (indications == 1 ? " indication" : " indications");
}

constexpr std::chrono::seconds BETWEEN_PROGRESS(1);

bool show(const Json& indication, Output& output) {
    const bool isNote = indication.contains("note");
    if (isNote) {
        output.report(indication);
    } else {
        output.print(indication);
    }
    return !isNote;
}

// Returns how many were printed.
size_t printUntil(Clock::time_point until, size_t count, Mailbox& mailbox, Output& output) {
    const auto start = Clock::now();
    size_t printed = 0;
    while (printed < count && output.isOpen()) {
        const auto now = Clock::now();
        const bool isLast = mailbox.serverDied() || now >= until;  // asked first: what came before is printed
        output.progress("watch: " + counted(printed) + " in " + durationText(Nanos(now - start).count()));
        const auto indication = mailbox.takeIndication(std::min(until, now + BETWEEN_PROGRESS));
        if (indication) {
            printed += show(*indication, output) ? 1 : 0;
        } else if (isLast || mailbox.interrupted()) {
            break;
        }
    }
    return printed;
}

void summarize(size_t printed, size_t lost, Clock::duration took, Output& output) {
    output.report({{"watch", "ended"},
                   {"indications", printed},
                   {"lost", lost},
                   {"seconds", std::chrono::duration<double>(took).count()},
                   {"message", counted(printed) + " in " + durationText(Nanos(took).count()) +
                                   (lost == 0 ? "" : ", " + std::to_string(lost) + " lost")}});
}

ExitCode fail(ExitCode code, const char* kind, const std::string& message, Output& output) {
    output.report(errorJson(kind, "watch", message));
    return code;
}

}  // namespace

ExitCode watchIndications(const WatchOptions& options, Mailbox& mailbox, Output& output) {
    const Interrupt interrupt(mailbox);
    const auto start = Clock::now();
    const auto length = std::chrono::duration<double>(options.seconds.value_or(0));
    const auto until =
        options.seconds ? start + std::chrono::duration_cast<Clock::duration>(length) : Clock::time_point::max();
    const size_t printed = printUntil(until, options.count.value_or(SIZE_MAX), mailbox, output);
    summarize(printed, mailbox.lost(), Clock::now() - start, output);
    if (mailbox.interrupted() || printed == options.count) return OK;
    if (mailbox.serverDied()) return fail(NO_SERVICE, "died", "the service has died", output);
    if (options.count) return fail(NO_ANSWER, "noAnswer", "fewer than " + counted(*options.count), output);
    return OK;
}

}  // namespace subsysctl
