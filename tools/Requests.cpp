#include "tools/Requests.h"

#include "tools/Callbacks.h"
#include "tools/Text.h"
#include "tools/Values.h"

#include <stubs/Table.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace subsysctl {

namespace {

using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::IccMetaReqInfo;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::IImsOrtcResponse;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ImsRtpDataInfo;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;
using ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsysResponse;

// What the help says of a verb beyond the interface. A method without a note has its verb as well.
struct Note {  // NOLINT(clang-analyzer-optin.performance.Padding): the table below reads in this order
    uint32_t code;
    const char* group;
    const char* example;  // the options of one
    bool allRequired = false;
};

constexpr char RF[] = "RF requests";
constexpr char ICC[] = "ICC requests";
constexpr char SERVICE[] = "Service requests";
constexpr char IMS[] = "IMS ORTC requests";

constexpr Note NOTES[] = {
    {ISubsys::TRANSACTION_getSwtpStatus, RF, ""},
    {ISubsys::TRANSACTION_getLcdInfo, RF, "--type 1"},
    {ISubsys::TRANSACTION_setMipiFreqClk, RF, "--id 1 --freq-clk 1100000000"},
    {ISubsys::TRANSACTION_setOscFreqClk, RF, "--id 1 --freq-clk 19200"},
    {ISubsys::TRANSACTION_getNvramData, RF, "--id 7 --size 16"},
    {ISubsys::TRANSACTION_setIccTuningState, ICC, "--technology 1 --band 3 --antenna 2 --state 1"},
    {ISubsys::TRANSACTION_setIccWifiAntState, ICC, "--antenna 1 --state 1"},
    {ISubsys::TRANSACTION_setIccSatelliteAntState, ICC, "--technology 1 --antenna 1 --state 1"},
    {ISubsys::TRANSACTION_getIccState, ICC, ""},
    {ISubsys::TRANSACTION_sendIccCmd, ICC, "--req-id 5 --data 0a0b --timeout-ms 1000"},
    {ISubsys::TRANSACTION_sendIccMetaCmd, ICC, "--id 1 --token 9 --type 2 --req-id 5 --data 0a"},
    {ISubsys::TRANSACTION_killProcess, SERVICE, "--pid 1234 --name vendor.dpmd", true},
    {ISubsys::TRANSACTION_setCallInfo, IMS, "--slot-id 0 --call-id 1 --text1 alice --value64 5"},
    {ISubsys::TRANSACTION_setOrtcRoomInfo, IMS, "--slot-id 0 --call-id 1 --room-id 7 --action 1"},
    {ISubsys::TRANSACTION_sendImsRtpData, IMS, "--slot-id 0 --call-id 1 --data 010203"},
    {ISubsys::TRANSACTION_setImsRtpRemotePubIpAddr, IMS,
     "--call-id 1 --rtp-port 5004 --rtcp-port 5005 --ip-addr 192.0.2.1"},
    {ISubsys::TRANSACTION_sendImsRtpRedunSignalMsg, IMS, "--msg-field1 1 --msg hello"},
};

Note noteOn(uint32_t code) {
    const auto* note = std::find_if(std::begin(NOTES), std::end(NOTES), [&](auto& each) { return each.code == code; });
    return note != std::end(NOTES) ? *note : Note{code, "Other requests", ""};
}

// `--timeout` is an option of the program itself.
std::string optionName(const char* name) {
    const std::string option = kebabCase(name);
    return "--" + (option == "timeout" ? "timeout-ms" : option);
}

using Options = std::vector<RequestOption>;

// The serial and the callbacks are the session's; a record is its fields. `owner` keeps the value alive.
template <class T>
void addOptions(Options& options, const std::shared_ptr<void>& owner, const char* name, const std::string& help,
                T& value, bool required) {
    if constexpr (subsys_stubs::Record<T>) {
        subsys_stubs::forEachField(value, [&]<class Member>(const auto& field, Member& member) {
            const FieldLimit* const limit = limitOf(subsys_stubs::RecordTraits<T>::name, field.name);
            addOptions(options, owner, field.name, helpOn<Member>(field.doc, limit), member, required);
        });
    } else if constexpr (!subsys_stubs::isInterfacePointer<T>) {
        if (name == std::string_view("serial")) return;
        options.push_back({optionName(name), typeName<T>(), help, required,
                           [owner, &value](const std::string& text) { return store(text, value); }});
    }
}

// Calls visitor(name, value) for each argument.
template <class Method, class Visitor>
void forEachArgument(const Method& method, typename Method::Arguments& arguments, Visitor visitor) {
    size_t index = 0;
    std::apply([&](auto&... each) { (visitor(method.arguments[index++], each), ...); }, arguments);
}

template <class Method>
auto sender(const Method& method, const typename Method::Arguments& arguments) {
    return [method, arguments](ISubsys& service, int32_t serial, const std::shared_ptr<Mailbox>& mailbox) {
        auto complete = arguments;
        forEachArgument(method, complete, [&]<class T>(const char* name, T& value) {
            if constexpr (subsys_stubs::isInterfacePointer<T>) {
                value = ndk::SharedRefBase::make<Reporter<typename T::element_type>>(name, mailbox);
            } else if constexpr (std::is_same_v<T, int32_t>) {
                if (name == std::string_view("serial")) value = serial;
            }
        });
        return std::apply([&](const auto&... each) { return (service.*method.call)(each...); }, complete);
    };
}

using IsAnswer = std::function<bool(const Json&, int32_t)>;

Needs needsOf(const std::string& method) {
    if (subsys_stubs::hasMethod<ISubsysResponse>(method + "Response")) return Needs::RF;
    return subsys_stubs::hasMethod<IImsOrtcResponse>(method + "Response") ? Needs::IMS : Needs::NOTHING;
}

IsAnswer responseTo(const std::string& method) {
    return [response = method + "Response"](const Json& json, int32_t serial) {
        return json.value("response", "") == response && json["info"]["serial"] == serial;
    };
}

template <class T>
void setCallbackAnswer(const T& argument, IsAnswer& isAnswer) {
    if constexpr (std::is_same_v<T, IccMetaReqInfo>) {
        // It has no serial; its id and token are the command's.
        isAnswer = [id = argument.id, token = argument.token](const Json& json, int32_t) {
            return json.contains("callback") && json["info"]["id"] == id && json["info"]["token"] == token;
        };
    } else if constexpr (subsys_stubs::isInterfacePointer<T>) {
        if (!isAnswer) isAnswer = [](const Json& json, int32_t) { return json.contains("callback"); };
    }
}

template <class Method>
IsAnswer answerTo(const Method& method, const typename Method::Arguments& arguments) {
    if (needsOf(method.name) != Needs::NOTHING) return responseTo(method.name);
    IsAnswer isAnswer;
    std::apply([&](const auto&... each) { (setCallbackAnswer(each, isAnswer), ...); }, arguments);
    return isAnswer;
}

// What the user left out and the other values tell.
template <class T>
void complete(T& argument, const IsGiven& isGiven) {
    if constexpr (std::is_same_v<T, ImsRtpDataInfo>) {
        if (!isGiven("--data-len")) argument.dataLen = static_cast<int32_t>(argument.data.size());
    }
}

template <class T>
void warn(const T& argument, std::vector<std::string>& warnings) {
    if constexpr (subsys_stubs::Record<T>) {
        subsys_stubs::forEachField(argument, [&](const auto& field, const auto& member) {
            const FieldLimit* const limit = limitOf(subsys_stubs::RecordTraits<T>::name, field.name);
            if constexpr (requires { member.size(); }) {
                if (limit == nullptr || member.size() <= limit->bytes) return;
                warnings.push_back(optionName(field.name) + " has " + std::to_string(member.size()) +
                                   " bytes, more than " + std::to_string(limit->bytes) + ": " + limit->beyond);
            }
        });
    }
}

template <class Arguments>
std::vector<std::string> warningsOn(const Arguments& arguments) {
    std::vector<std::string> warnings;
    std::apply([&](const auto&... each) { (warn(each, warnings), ...); }, arguments);
    return warnings;
}

template <class Method>
RequestVerb requestVerb(const Method& method) {
    using Arguments = typename Method::Arguments;
    const Note note = noteOn(method.code);
    const auto arguments = std::make_shared<Arguments>();
    RequestVerb verb{kebabCase(method.name), note.group, method.doc, "", {}, {}};
    verb.example = verb.name + (*note.example != '\0' ? " " : "") + note.example;
    forEachArgument(method, *arguments, [&]<class T>(const char* name, T& value) {
        addOptions(verb.options, arguments, name, helpOn<T>("", nullptr), value, note.allRequired);
    });
    verb.take = [method, arguments](const IsGiven& isGiven) {
        Arguments given = std::exchange(*arguments, Arguments());
        std::apply([&](auto&... each) { (complete(each, isGiven), ...); }, given);
        return Request{method.name, warningsOn(given), needsOf(method.name), sender(method, given),
                       answerTo(method, given)};
    };
    return verb;
}

template <class Arguments>
constexpr bool isRegistration = false;
template <class... Args>
constexpr bool isRegistration<std::tuple<Args...>> = sizeof...(Args) > 0 &&
                                                     (subsys_stubs::isInterfacePointer<Args> && ...);

}  // namespace

std::vector<RequestVerb> requestVerbs() {
    std::vector<RequestVerb> verbs;
    subsys_stubs::forEachMethod<ISubsys>([&]<class Method>(const Method& method) {
        if constexpr (!isRegistration<typename Method::Arguments>) verbs.push_back(requestVerb(method));
    });
    return verbs;
}

}  // namespace subsysctl
