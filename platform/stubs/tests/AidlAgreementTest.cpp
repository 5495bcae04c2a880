#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

// The stubs are written by hand; the .aidl files are the interface. Both are brought into one form and compared whole.
namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {
namespace {

constexpr char kPackage[] = "vendor.nuvex.hardware.subsys_interface.subsys";

// The kind of a declaration, and its members in order: "int serial", "SUCCESS = 0", "get(in int serial)".
struct Declaration {
    std::string kind;
    std::vector<std::string> members;
    bool operator==(const Declaration&) const = default;
};
using Package = std::map<std::string, Declaration>;

std::ostream& operator<<(std::ostream& out, const Declaration& declaration) {
    out << declaration.kind;
    for (const std::string& member : declaration.members) out << "\n  " << member;
    return out;
}

// ---- what the .aidl files say

std::string contents(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return std::regex_replace(text.str(), std::regex(R"(/\*(.|\n)*?\*/)"), "");
}

std::vector<std::string> membersIn(const std::string& body) {
    static const std::regex kMethod(R"(^void (\w+\(.*\))$)");
    static const std::regex kSeparator("[;,]\\s*\\n");
    std::vector<std::string> members;
    for (std::sregex_token_iterator it(body.begin(), body.end(), kSeparator, -1), end; it != end; ++it) {
        const std::string member = std::regex_replace(it->str(), std::regex(R"(^\s+|\s+$)"), "");
        if (!member.empty()) members.push_back(std::regex_replace(member, kMethod, "$1"));
    }
    return members;
}

Package fromFiles() {
    static const std::regex kForm(
        R"(package ([\w.]+);[^{]*?((?:oneway )?interface|parcelable|enum) (\w+) \{([^}]*)\})");
    Package package;
    for (const auto& file : std::filesystem::recursive_directory_iterator(AIDL_FOLDER)) {
        if (file.path().extension() != ".aidl") continue;
        const std::string text = contents(file.path());
        std::smatch form;
        EXPECT_TRUE(std::regex_search(text, form, kForm)) << file.path();
        EXPECT_EQ(kPackage, form[1].str()) << file.path();
        EXPECT_EQ(file.path().stem(), form[3].str());
        package[form[3]] = {form[2], membersIn(form[4])};
    }
    return package;
}

// ---- what the stubs say

std::string simpleName(const std::string& descriptor) {
    const size_t dot = descriptor.rfind('.');
    EXPECT_EQ(kPackage, descriptor.substr(0, dot));
    return descriptor.substr(dot + 1);
}

template <class T>
std::string nameOf() {
    if constexpr (std::is_same_v<T, int32_t>) return "int";
    if constexpr (std::is_same_v<T, int64_t>) return "long";
    if constexpr (std::is_same_v<T, int8_t> || std::is_same_v<T, uint8_t>) return "byte";  // unsigned only in byte[]
    if constexpr (std::is_same_v<T, bool>) return "boolean";
    if constexpr (std::is_same_v<T, std::string>) return "String";
    if constexpr (std::is_same_v<T, SUBSYS_Errno>) return "SUBSYS_Errno";
    if constexpr (requires { T::descriptor; }) return simpleName(T::descriptor);
    if constexpr (requires { typename T::element_type; }) return nameOf<typename T::element_type>();
    if constexpr (requires(T & values) { values.push_back({}); } && !std::is_same_v<T, std::string>) {
        return nameOf<typename T::value_type>() + "[]";
    }
    return "";
}

template <class T>
std::string defaultOf([[maybe_unused]] const T& value) {
    if constexpr (std::is_same_v<T, SUBSYS_Errno>) return " = SUBSYS_Errno." + toString(value);
    return "";
}

template <class R>
void addRecord(Package& package) {
    Declaration declaration{"parcelable", {}};
    const R record;
    subsys_stubs::forEachField(record, [&]<class T>(const char* name, const T& value) {
        EXPECT_NE((std::is_same_v<T, uint8_t>), true) << name;
        declaration.members.push_back(nameOf<T>() + " " + name + defaultOf(value));
    });
    package[nameOf<R>()] = declaration;
}

template <class I, class... Args>
std::string signature(const subsys_stubs::Method<I, Args...>& method) {
    std::string text;
    size_t index = 0;
    ((text += (text.empty() ? "in " : ", in ") + nameOf<std::remove_cvref_t<Args>>() + " " + method.arguments[index++]),
     ...);
    return std::string(method.name) + "(" + text + ")";
}

template <class I>
void addInterface(Package& package) {
    Declaration declaration{I::oneway ? "oneway interface" : "interface", {}};
    std::apply([&](const auto&... method) { (declaration.members.push_back(signature(method)), ...); }, I::methods());
    package[nameOf<I>()] = declaration;
}

void addErrno(Package& package) {
    Declaration declaration{"enum", {}};
    for (const SUBSYS_Errno value : ndk::enum_range<SUBSYS_Errno>()) {
        declaration.members.push_back(toString(value) + " = " + std::to_string(static_cast<int32_t>(value)));
    }
    package["SUBSYS_Errno"] = declaration;
}

template <class... R>
void addRecords(Package& package) {
    (addRecord<R>(package), ...);
}

Package fromStubs() {
    Package package;
    addInterface<ISubsys>(package);
    addInterface<ISubsysResponse>(package);
    addInterface<ISubsysIndication>(package);
    addInterface<ISubsysIccMetaCallback>(package);
    addInterface<IImsOrtcResponse>(package);
    addInterface<IImsOrtcIndication>(package);
    addErrno(package);
    addRecords<CallInfo, IccIndInfo, IccMetaReqInfo, IccMetaRespInfo, IccPercType, IccPerceptionInfo, IccReqInfo,
               IccRespInfo, IccStateInfo, ImsRtpDataInfo, ImsRtpPubIpAddrInfo, ImsRtpRedunDataLinkStateInfo,
               ImsRtpRedunSignalMsg, ImsRtpRedunSignalMsgRspInfo, OrtcConnectInfo, OrtcRoomInfo, OrtcStatus,
               SubsysResponseInfo>(package);
    return package;
}

TEST(Aidl, Stubs_WhenComparedWithTheFiles_ThenNamesOrderAndTypesAgree) {
    const Package files = fromFiles();
    const Package stubs = fromStubs();
    ASSERT_EQ(25u, files.size());
    for (const auto& [name, declaration] : files) {
        ASSERT_TRUE(stubs.contains(name)) << name;
        EXPECT_EQ(declaration, stubs.at(name)) << name;
    }
    EXPECT_EQ(files.size(), stubs.size());
}

}  // namespace
}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
