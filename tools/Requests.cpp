#include "tools/Requests.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tools/Text.h"

namespace subsysctl {

namespace {

using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::IccMetaReqInfo;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ImsRtpDataInfo;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;

struct Verb {
    uint32_t code;
    Needs needs;
    const char* group;
    const char* help;
    const char* options;  // of the example
    bool allRequired = false;
};

constexpr char kRf[] = "RF requests";
constexpr char kIcc[] = "ICC requests";
constexpr char kService[] = "Service requests";
constexpr char kIms[] = "IMS ORTC requests";

constexpr Verb kVerbs[] = {
    {ISubsys::TRANSACTION_getSwtpStatus, Needs::RF, kRf, "SWTP status", ""},
    {ISubsys::TRANSACTION_getLcdInfo, Needs::RF, kRf, "LCD panel information", "--type 1"},
    {ISubsys::TRANSACTION_setMipiFreqClk, Needs::RF, kRf, "Set a MIPI clock", "--id 1 --freq-clk 1100000000"},
    {ISubsys::TRANSACTION_setOscFreqClk, Needs::RF, kRf, "Set an oscillator clock", "--id 1 --freq-clk 19200"},
    {ISubsys::TRANSACTION_getNvramData, Needs::RF, kRf, "Read RF NVRAM", "--id 7 --size 16"},
    {ISubsys::TRANSACTION_setIccTuningState, Needs::RF, kIcc, "Tune an antenna",
     "--technology 1 --band 3 --antenna 2 --state 1"},
    {ISubsys::TRANSACTION_setIccWifiAntState, Needs::RF, kIcc, "Wi-Fi antenna state", "--antenna 1 --state 1"},
    {ISubsys::TRANSACTION_setIccSatelliteAntState, Needs::RF, kIcc, "Satellite antenna state",
     "--technology 1 --antenna 1 --state 1"},
    {ISubsys::TRANSACTION_getIccState, Needs::RF, kIcc, "State of the controller", ""},
    {ISubsys::TRANSACTION_sendIccCmd, Needs::RF, kIcc, "Send a command", "--req-id 5 --data 0a0b --timeout-ms 1000"},
    {ISubsys::TRANSACTION_sendIccMetaCmd, Needs::NOTHING, kIcc, "Send a command with a callback of its own",
     "--id 1 --token 9 --type 2 --req-id 5 --data 0a"},
    {ISubsys::TRANSACTION_killProcess, Needs::RF, kService, "Kill a process that the service may kill",
     "--pid 1234 --name vendor.dpmd", true},
    {ISubsys::TRANSACTION_setCallInfo, Needs::IMS, kIms, "Describe a call",
     "--slot-id 0 --call-id 1 --text1 alice --value64 5"},
    {ISubsys::TRANSACTION_setOrtcRoomInfo, Needs::IMS, kIms, "Describe the room of a call",
     "--slot-id 0 --call-id 1 --room-id 7 --action 1"},
    {ISubsys::TRANSACTION_sendImsRtpData, Needs::IMS, kIms,
     "Send one RTP payload; without --data-len that is the number of its bytes",
     "--slot-id 0 --call-id 1 --data 010203"},
    {ISubsys::TRANSACTION_setImsRtpRemotePubIpAddr, Needs::IMS, kIms, "Set the remote public address",
     "--call-id 1 --rtp-port 5004 --rtcp-port 5005 --ip-addr 192.0.2.1"},
    {ISubsys::TRANSACTION_sendImsRtpRedunSignalMsg, Needs::IMS, kIms, "Send a redundancy signalling message",
     "--msg-field1 1 --msg hello"},
};

template <class T>
constexpr const char* typeName() {
    if constexpr (std::is_same_v<T, std::vector<uint8_t>>) {
        return "HEX";
    } else if constexpr (std::is_same_v<T, std::string>) {
        return "TEXT";
    } else {
        return "N";
    }
}

// `--timeout` is an option of the program itself.
std::string optionName(const char* name) {
    const std::string option = kebabCase(name);
    return "--" + (option == "timeout" ? "timeout-ms" : option);
}

template <class T>
bool store(const std::string& text, T& value) {
    if constexpr (std::is_same_v<T, std::string>) {
        value = text;
        return true;
    } else {
        std::optional<T> parsed;
        if constexpr (std::is_same_v<T, std::vector<uint8_t>>) {
            parsed = parseHex(text);
        } else {
            parsed = parseNumber<T>(text);
        }
        if (parsed) value = *std::move(parsed);
        return parsed.has_value();
    }
}

using Options = std::vector<RequestOption>;

// The arguments live as long as the option.
template <class Tuple, class T>
void addOption(Options& options, const std::shared_ptr<Tuple>& arguments, const char* name, T& value, bool required) {
    options.push_back({optionName(name), typeName<T>(), required,
                       [arguments, &value](const std::string& text) { return store(text, value); }});
}

// The serial and the callbacks are the session's; a record is its fields.
template <class Tuple, class T>
void addOptions(Options& options, const std::shared_ptr<Tuple>& arguments, const std::string& argument, T& value,
                bool required) {
    if constexpr (subsys_stubs::Record<T>) {
        subsys_stubs::forEachField(
            value, [&](const char* name, auto& field) { addOption(options, arguments, name, field, required); });
    } else if constexpr (!ndk::internal::isInterface<T>) {
        if (argument != "serial") addOption(options, arguments, argument.c_str(), value, required);
    }
}

template <class T>
struct Arguments;
template <class I, class... Args>
struct Arguments<subsys_stubs::Method<I, Args...>> {
    using Tuple = std::tuple<std::remove_cvref_t<Args>...>;
};

template <class Method, class Tuple>
auto sender(const Method& method, const Tuple& arguments) {
    return
        [method, arguments](ISubsys& service, int32_t serial, const std::shared_ptr<Request::MetaCallback>& callback) {
            Tuple complete = arguments;
            if constexpr (std::is_same_v<std::tuple_element_t<0, Tuple>, int32_t>) {
                std::get<0>(complete) = serial;
            } else {
                std::get<std::shared_ptr<Request::MetaCallback>>(complete) = callback;
            }
            return std::apply([&](const auto&... each) { return (service.*method.call)(each...); }, complete);
        };
}

using IsAnswer = std::function<bool(const Json&, int32_t)>;

// The answer to a meta command has no serial; its id and token are the command's.
IsAnswer metaAnswer(const IccMetaReqInfo& sent) {
    return [id = sent.id, token = sent.token](const Json& json, int32_t) {
        return json.contains("callback") && json["info"]["id"] == id && json["info"]["token"] == token;
    };
}

IsAnswer answerTo(const std::string& method) {
    return [response = method + "Response"](const Json& json, int32_t serial) {
        return json.value("response", "") == response && json["info"]["serial"] == serial;
    };
}

template <uint32_t code, class Tuple>
void complete(Tuple& arguments, const IsGiven& isGiven) {
    if constexpr (code == ISubsys::TRANSACTION_sendImsRtpData) {
        auto& info = std::get<ImsRtpDataInfo>(arguments);
        if (!isGiven("--data-len")) info.dataLen = static_cast<int32_t>(info.data.size());
    }
}

template <size_t Index>
RequestVerb requestVerb() {
    static constexpr Verb kVerb = kVerbs[Index];
    static constexpr auto kMethod = std::get<kVerb.code - FIRST_CALL_TRANSACTION>(ISubsys::methods());
    using Tuple = typename Arguments<std::remove_const_t<decltype(kMethod)>>::Tuple;
    const auto arguments = std::make_shared<Tuple>();

    RequestVerb verb{kebabCase(kMethod.name), kVerb.group, kVerb.help, {}, {}};
    verb.help += "\n  " + verb.name + (*kVerb.options ? " " : "") + kVerb.options;
    const auto addEach = [&](auto&... each) {
        size_t index = 0;
        (addOptions(verb.options, arguments, kMethod.arguments[index++], each, kVerb.allRequired), ...);
    };
    std::apply(addEach, *arguments);
    verb.take = [arguments](const IsGiven& isGiven) {
        Tuple given = std::exchange(*arguments, Tuple());
        complete<kVerb.code>(given, isGiven);
        IsAnswer isAnswer = answerTo(kMethod.name);
        if constexpr (kVerb.code == ISubsys::TRANSACTION_sendIccMetaCmd) isAnswer = metaAnswer(std::get<0>(given));
        return Request{kMethod.name, kVerb.needs, sender(kMethod, given), isAnswer};
    };
    return verb;
}

}  // namespace

std::vector<RequestVerb> requestVerbs() {
    return []<size_t... Index>(std::index_sequence<Index...>) {
        return std::vector<RequestVerb>{requestVerb<Index>()...};
    }
    (std::make_index_sequence<std::size(kVerbs)>());
}

}  // namespace subsysctl
