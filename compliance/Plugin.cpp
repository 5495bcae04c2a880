#include "compliance/Plugin.h"

#include "compliance/Library.h"
#include "compliance/PluginEvents.h"
#include "rf/IccPluginApi.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <exception>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* PAGE = "docs/writing-a-plugin.md#the-source";
constexpr const char* BUILD = "docs/writing-a-plugin.md#the-build";
constexpr const char* RULES = "docs/writing-a-plugin.md#what-to-know";

constexpr milliseconds SETTLE{300};         // in which late events come
constexpr milliseconds TIMEOUT_SLACK{500};  // beyond the time-out that a command was given
constexpr uint8_t UNTOUCHED = 0xA5;
constexpr size_t GUARD_SIZE = 4096;

constexpr const char* FUNCTIONS[] = {
    "iccApis_init",   "registerIccEvent",   "iccSendReqSync", "iccSetSatelliteAntState", "iccSetTxSharingState",
    "iccSetAclState", "iccSetCoexAntState", "iccGetHwId",     "enableIccUartLog",        "iccReloadConfig",
    "setScreenState", "getIccState",        "sendIccEventInd"};

template <typename Signature>
struct Function {
    const char* name;
};
#define FUNCTION(name)           \
    Function<decltype(::name)> { \
#name                    \
    }

// ---- What it exports

Verdict exportVerdict(const ElfFile& elf, const std::string& function) {
    const std::string mangled = "_Z" + std::to_string(function.size()) + function;
    std::string cppName;
    for (const auto& symbol : elf.symbols()) {
        if (!symbol.isDefined) continue;
        if (symbol.name == function) return symbol.isFunction ? ok("C linkage") : failed("a function", "data");
        if (symbol.name.starts_with(mangled)) cppName = symbol.name;
    }
    return cppName.empty() ? ok("left out, so the service skips it") : failed("C linkage", "C++ linkage: " + cppName);
}

Verdict anyVerdict(const ElfFile& elf) {
    const auto& symbols = elf.symbols();
    const bool hasOne = std::any_of(std::begin(FUNCTIONS), std::end(FUNCTIONS), [&](const char* function) {
        return std::any_of(symbols.begin(), symbols.end(),
                           [&](const auto& symbol) { return symbol.isDefined && symbol.name == function; });
    });
    return hasOne ? ok() : failed("at least one of the thirteen functions", "none");
}

void checkExports(Checks& checks, const ElfFile& elf) {
    for (const char* function : FUNCTIONS) {
        checks.check(std::string("exports ") + function, PAGE, [&] { return exportVerdict(elf, function); });
    }
    checks.check("exports something", PAGE, [&] { return anyVerdict(elf); });
}

// ---- What it does

// The bytes of an answer, and behind them others that the plugin has to leave alone.
struct AnswerBuffer {
    explicit AnswerBuffer(size_t answerSize) : size(answerSize), bytes(answerSize + GUARD_SIZE, UNTOUCHED) {}

    [[nodiscard]] bool isUntouchedFrom(size_t offset) const {
        return std::all_of(bytes.begin() + static_cast<ptrdiff_t>(offset), bytes.end(),
                           [](uint8_t byte) { return byte == UNTOUCHED; });
    }
    void clear() { std::fill(bytes.begin(), bytes.end(), UNTOUCHED); }

    size_t size;
    std::vector<uint8_t> bytes;
};

struct Command {
    const char* label;
    size_t requestSize;
    size_t answerSize;
    uint32_t reqId;
    uint32_t timeoutMs;
};
constexpr Command COMMANDS[] = {
    {"request and answer", 16, 256, 5, 1000},
    {"one byte of answer", 129, 1, 42, 1000},
    {"no request", 0, 256, 6, 100},
    {"no room for an answer", 4, 0, 7, 100},
    {"a large request", 65536, 256, 254, 1000},
    {"a negative id, no time", 1, 256, 0xFFFFFFFF, 0},
};

class PluginCalls {
public:
    PluginCalls(Checks& checks, void* library) : mChecks(checks), mLibrary(library) {}

    void registerEvents();
    void callAll();
    void checkEvents();

private:
    template <typename R, typename... Args>
    void call(Function<R(Args...)> function, const std::string& label, std::type_identity_t<Args>... arguments);
    template <typename Signature>
    [[nodiscard]] Signature* find(Function<Signature> function) const {
        return reinterpret_cast<Signature*>(dlsym(mLibrary, function.name));
    }
    template <typename Task>
    Verdict enter(const Task& task);
    void callSettings();
    void callCommand(const Command& command);
    Verdict runCommand(decltype(::iccSendReqSync)& function, const Command& command);

    Checks& mChecks;
    void* const mLibrary;
    std::deque<AnswerBuffer> mAnswers;  // kept, since a late answer must not come
};

template <typename Task>
Verdict PluginCalls::enter(const Task& task) try {
    const PluginEvents::CallScope scope;
    task();
    return ok();
} catch (const std::exception& error) {
    return failed("no exception", error.what());
} catch (...) {
    return failed("no exception", "one of another type");
}

template <typename R, typename... Args>
void PluginCalls::call(Function<R(Args...)> function, const std::string& label,
                       std::type_identity_t<Args>... arguments) {
    auto* const address = find(function);
    if (address == nullptr) return;
    mChecks.check(std::string(function.name) + ": " + label, RULES,
                  [&] { return enter([&] { static_cast<void>(address(std::move(arguments)...)); }); });
}

void PluginCalls::registerEvents() {
    auto* const address = find(FUNCTION(registerIccEvent));
    if (address == nullptr) return;
    for (const char* label : {"", ", again"}) {
        for (uint32_t number = 1; number <= PluginEvents::TYPES; ++number) {
            const auto type = static_cast<IccEventType>(number);
            auto& events = PluginEvents::get();
            const std::string name = std::string("registerIccEvent: ") + PluginEvents::nameOf(type) + label;
            (void)mChecks.prepare(name, RULES, [&] {
                return enter([&] { address(type, events.contextOf(type), PluginEvents::onEvent); });
            });
        }
    }
}

void PluginCalls::callAll() {
    call(FUNCTION(iccApis_init), "as the service does", 1, 4000000, 0);
    for (const auto& command : COMMANDS) callCommand(command);
    callSettings();
    call(FUNCTION(iccGetHwId), "plain");
    call(FUNCTION(enableIccUartLog), "plain");
    call(FUNCTION(iccReloadConfig), "plain");
    call(FUNCTION(getIccState), "an empty record", IccStateInfoType{});
    uint8_t bytes[UINT16_MAX] = {1, 2, 3};
    call(FUNCTION(sendIccEventInd), "two bytes", 1, bytes, 2);
    call(FUNCTION(sendIccEventInd), "without data", UINT32_MAX, nullptr, 0);
    call(FUNCTION(sendIccEventInd), "as many bytes as there can be", 0, bytes, UINT16_MAX);
}

void PluginCalls::callSettings() {
    call(FUNCTION(iccSetSatelliteAntState), "ordinary", 1, 2, 3);
    call(FUNCTION(iccSetSatelliteAntState), "extreme numbers", -1, INT_MIN, INT_MAX);
    call(FUNCTION(iccSetTxSharingState), "two combinations", 1, {1, 3}, {5, 6}, {7, 8});
    call(FUNCTION(iccSetTxSharingState), "no combination", 0, {}, {}, {});
    call(FUNCTION(iccSetAclState), "ordinary", 1, 1800, 2, 1);
    call(FUNCTION(iccSetAclState), "extreme numbers", UINT8_MAX, UINT16_MAX, UINT8_MAX, UINT8_MAX);
    call(FUNCTION(iccSetCoexAntState), "ordinary", 1, 0, 1, 0);
    call(FUNCTION(iccSetCoexAntState), "extreme numbers", UINT8_MAX, UINT8_MAX, UINT8_MAX, UINT8_MAX);
    call(FUNCTION(setScreenState), "on", true);
    call(FUNCTION(setScreenState), "off", false);
}

void PluginCalls::callCommand(const Command& command) {
    auto* const address = find(FUNCTION(iccSendReqSync));
    if (address == nullptr) return;
    mChecks.check(std::string("iccSendReqSync: ") + command.label, PAGE, [&] { return runCommand(*address, command); });
}

Verdict PluginCalls::runCommand(decltype(::iccSendReqSync)& function, const Command& command) {
    std::vector<uint8_t> request(command.requestSize, 1);
    AnswerBuffer& answer = mAnswers.emplace_back(command.answerSize);
    const auto start = Clock::now();
    Verdict verdict = enter([&] {
        function(command.reqId, request.data(), static_cast<uint32_t>(request.size()), answer.bytes.data(),
                 static_cast<uint32_t>(answer.size), command.timeoutMs);
    });
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    const bool isGuarded = answer.isUntouchedFrom(answer.size);
    answer.clear();
    if (verdict.kind != Verdict::OK) return verdict;
    if (!isGuarded) return failed("at most " + std::to_string(answer.size) + " bytes written", "more");
    if (took <= milliseconds(command.timeoutMs) + TIMEOUT_SLACK) return ok();
    return failed("a return within its time-out of " + std::to_string(command.timeoutMs) + " ms",
                  std::to_string(took.count()) + " ms");
}

void PluginCalls::checkEvents() {
    std::this_thread::sleep_for(SETTLE);
    mChecks.check("iccSendReqSync: no late answer", PAGE, [&] {
        if (mAnswers.empty()) return notChecked("no command was sent in this process");
        const bool areUntouched =
            std::all_of(mAnswers.begin(), mAnswers.end(), [](const auto& answer) { return answer.isUntouchedFrom(0); });
        return areUntouched ? ok() : failed("nothing written after the return", "a write");
    });
    for (uint32_t number = 1; number <= PluginEvents::TYPES; ++number) {
        const auto type = static_cast<IccEventType>(number);
        mChecks.check(std::string("events: ") + PluginEvents::nameOf(type), RULES,
                      [&] { return PluginEvents::get().verdict(type); });
    }
    mChecks.check("events: no other type", RULES, [] { return PluginEvents::get().othersVerdict(); });
}

// While the process ends, after the plugin's static objects are gone and before it stands still.
void linger() {
    std::this_thread::sleep_for(SETTLE);
}

}  // namespace

void checkPlugin(Checks& checks, const std::string& file) {
    ElfFile elf(file);
    void* library = nullptr;
    if (!checkFile(checks, PAGE, elf)) return;
    checkExports(checks, elf);
    (void)std::atexit(linger);
    if (!checkNeeds(checks, BUILD, elf)) return;
    if (!checkOpens(checks, BUILD, file, RTLD_NOW | RTLD_GLOBAL, library)) return;
    PluginCalls calls(checks, library);
    calls.registerEvents();
    calls.callAll();
    calls.checkEvents();
    checks.checkEnd("the end of the process, while events may come", RULES);
    std::exit(EXIT_SUCCESS);
}

}  // namespace compliance
