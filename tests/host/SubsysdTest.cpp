#include "tests/support/DeviceFolder.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_manager.h>

#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;
using testing::AllOf;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::string NAME = std::string(ISubsys::descriptor) + "/default";
const std::string SERVING = "subsysd: serving " + NAME + ", pid ";

std::vector<std::string> command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SUBSYSD);
    return arguments;
}

class Daemon : public test::Process {
public:
    // Returns when the output holds the text.
    explicit Daemon(const std::vector<std::string>& arguments = {}, const std::string& text = SERVING)
        : Process(command(arguments)) {
        EXPECT_TRUE(awaitOutput(text)) << output();
    }
    void expectEnd(int signalNumber, int code) {
        signal(signalNumber);
        EXPECT_EQ(wait(), code) << output();
    }
};

// Runs daemons with a folder of names, a device folder and nothing else of the environment.
class Subsysd : public testing::Test {
protected:
    Subsysd() { std::filesystem::remove(mNames.path()); }  // the daemon makes it

    // Runs to its end.
    static void expectEnd(const std::vector<std::string>& arguments, int code, const std::string& text) {
        test::Process daemon(command(arguments));
        EXPECT_EQ(daemon.wait(), code) << daemon.output();
        EXPECT_THAT(daemon.output(), HasSubstr(text));
        EXPECT_THAT(daemon.output(), Not(HasSubstr(SERVING)));
    }
    // Serves, is asked to end, and gives its output.
    static std::string serveAndEnd(const std::vector<std::string>& arguments) {
        Daemon daemon(arguments);
        daemon.expectEnd(SIGTERM, 0);
        return daemon.output();
    }

    // The plugin list of the device, and what the daemon says of it.
    void writeList(const std::string& text) const { mDevice.write("/odm/etc/plugin_config.xml", text); }
    static std::string withItem(const std::string& attributes) {
        return "<plugin_config>\n<item " + attributes + "/></plugin_config>";
    }

    // Where the device's file is on this machine.
    [[nodiscard]] std::string place(const std::string& file) const { return mDevice.place(file); }

    const test::NamesFolder mNames;
    const test::DeviceFolder mDevice;
};

std::shared_ptr<ISubsys> service() {
    return ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(NAME.c_str())));
}

TEST_F(Subsysd, Signal_WhenStartingOrServing_ThenItEndsWithZero) {
    for (const int number : {SIGTERM, SIGINT}) Daemon().expectEnd(number, 0);
    Daemon({"--load", COMPONENT_LIBRARY}, "HostTestComponent: loaded").expectEnd(SIGTERM, 0);
}

TEST_F(Subsysd, Signal_WhenAComponentNeverReturns_ThenItEndsByForce) {
    setenv("HOST_TEST_HANGS", "1", 1);
    Daemon daemon({"--load", COMPONENT_LIBRARY, "--stop-timeout", "50"}, "HostTestComponent: init 0");
    daemon.expectEnd(SIGTERM, 3);
    EXPECT_THAT(daemon.output(),
                HasSubstr(" E subsysd: the main thread is stuck: ended by force 50 ms after the signal\n"));
}

TEST_F(Subsysd, Signal_WhenNoneOfItsOwn_ThenItServesOn) {
    Daemon daemon;
    for (const int number : {SIGHUP, SIGUSR2, SIGPIPE, SIGUSR1}) daemon.signal(number);
    EXPECT_TRUE(daemon.awaitOutput(" I subsysd: " + NAME + ", pid " + std::to_string(daemon.pid()) + "\n"));
    EXPECT_TRUE(daemon.awaitOutput(" I subsysd: rf.response: none\n"));
    EXPECT_TRUE(daemon.awaitOutput(" I subsysd: binder.threads: "));
    EXPECT_TRUE(service()->getSwtpStatus(1).isOk());
    daemon.expectEnd(SIGTERM, 0);
}

TEST_F(Subsysd, Signal_WhenTheParentBlocksIt_ThenItEndsAllTheSame) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    Daemon daemon;
#if !defined(__SANITIZE_THREAD__)
    // A debugger stops at a signal only where it is not blocked.
    std::stringstream status;
    status << std::ifstream("/proc/" + std::to_string(daemon.pid()) + "/status").rdbuf();
    EXPECT_THAT(status.str(), HasSubstr("\nSigBlk:\t0000000000000000\n"));
#endif
    daemon.expectEnd(SIGTERM, 0);
}

TEST_F(Subsysd, Start_WhenStandardFilesAreClosed_ThenTheyAreNull) {
    test::Process daemon({"/bin/sh", "-c", "exec " SUBSYSD " <&- >&- 2>&-"});
    ASSERT_NE(service(), nullptr);
    const std::filesystem::path files = "/proc/" + std::to_string(daemon.pid()) + "/fd";
    for (const char* number : {"0", "1", "2"}) EXPECT_EQ(std::filesystem::read_symlink(files / number), "/dev/null");
}

TEST_F(Subsysd, Log_WhenNobodyReads_ThenRequestsAreServedAndLinesAreDropped) {
    Daemon daemon({"--log-level", "debug"});
    const auto client = service();
    constexpr int MORE_LINES_THAN_A_PIPE_HOLDS = 2000;
    for (int i = 0; i < MORE_LINES_THAN_A_PIPE_HOLDS; ++i) ASSERT_TRUE(client->setCallback(nullptr, nullptr).isOk());
    std::atomic<bool> isRead = false;
    std::thread caller([&] {
        while (!isRead) EXPECT_TRUE(client->setCallback(nullptr, nullptr).isOk());
    });
    EXPECT_TRUE(daemon.awaitOutput(" log lines were dropped\n"));
    isRead = true;
    caller.join();
}

TEST_F(Subsysd, Log_WhenATextHasControlCharacters_ThenTheyAreEscaped) {
    writeList(withItem("name='\xc3\xa9&#27;[31m&#127;&#155;' path='a\nb&#10;c'"));
    Daemon daemon;
    daemon.signal(SIGUSR1);
    EXPECT_TRUE(daemon.awaitOutput(": plugin.0: \xc3\xa9\\x1b[31m\\x7f\\xc2\\x9b, a\\x0ab\\x0ac, not open\n"));
    const std::string output = daemon.output();
    EXPECT_THAT(output, HasSubstr("configName =\xc3\xa9\\x1b[31m\\x7f\\xc2\\x9b !\n"));
    EXPECT_THAT(output, HasSubstr("\\x0ac !\n"));
}

TEST_F(Subsysd, Start_WhenTheNameIsNotToBeHad_ThenItFailsAndTheFirstStays) {
    const Daemon first;
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": another process serves it");
    const ndk::SpAIBinder service(AServiceManager_checkService(NAME.c_str()));
    EXPECT_EQ(AIBinder_ping(service.get()), STATUS_OK);
    first.signal(SIGSTOP);
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": another process serves it");
    first.signal(SIGCONT);
    setenv("SUBSYS_BINDER_DIR", SUBSYSD, 1);
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": the folder of service names is not usable");
    setenv("SUBSYS_BINDER_DIR", "/proc/names", 1);
    expectEnd({}, EXIT_FAILURE, "the folder of names /proc/names cannot be made: ");
}

TEST_F(Subsysd, Start_WhenOptionsAreWrong_ThenTheLineNamesThem) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--nonsense=1"}, "unknown option '--nonsense=1'"},
        {{"-xy"}, "unknown option '-x'"},
        {{"argument"}, "unexpected argument 'argument'; expected options only"},
        {{"--device"}, "--device: expected a folder"},
        {{"--load"}, "--load: expected a file"},
        {{"--version=1"}, "--version takes no value"},
        {{"--log-level", "loud"}, "--log-level 'loud': expected debug, info, warn or error"},
        {{"--stop-timeout", "-1"}, "--stop-timeout '-1': expected 0 to 600000"},
        {{"--stop-timeout", "600001"}, "--stop-timeout '600001': expected 0 to 600000"},
        {{"--stop-timeout", "1s"}, "--stop-timeout '1s': expected 0 to 600000"},
    };
    constexpr int USAGE = 2;
    for (const auto& [arguments, line] : cases) expectEnd(arguments, USAGE, "subsysd: " + line + "\n");
    expectEnd({"--help"}, EXIT_SUCCESS, "SUBSYS_DEVICE_ROOT");
    expectEnd({"--version"}, EXIT_SUCCESS, "subsysd " SUBSYS_VERSION "\n");
}

TEST_F(Subsysd, Start_WhenThereIsNoDeviceFolder_ThenItSaysSo) {
    mDevice.write("/file", "no folder");
    const auto expectFault = [](const std::string& device, const std::string& fault) {
        const std::string line = "subsysd: can't use the device folder '" + device + "': " + fault + "\n";
        expectEnd({"--device", device}, EXIT_FAILURE, line);
        setenv("SUBSYS_DEVICE_ROOT", device.c_str(), 1);
        if (!device.empty()) expectEnd({}, EXIT_FAILURE, line);
    };
    expectFault(place("/missing"), "No such file or directory");
    expectFault(place("/file"), "Not a directory");
    expectFault("", "Invalid argument");
}

TEST_F(Subsysd, PluginList_WhenFaulty_ThenALineSaysWhy) {
    const std::string list = "plugin list: " + place("/odm/etc/plugin_config.xml");
    mDevice.write("/text.so", std::string(100, 'x'));
    mDevice.copy("/good.so", COMPONENT_LIBRARY);
    mDevice.copy("/foreign.so", "/proc/self/exe");
    std::fstream(place("/foreign.so")).seekp(offsetof(Elf64_Ehdr, e_machine)).write("\xff\xff", 2);
    const std::pair<std::string, std::string> cases[] = {
        {"<plugin_config", list + " is malformed: XML_ERROR_"},
        {"<other/>", list + " has no item libiccapis in a plugin_config\n"},
        {withItem("name='libiccapi' path='/good.so'"), list + " has no item libiccapis in a plugin_config\n"},
        {withItem("name='a'"), "plugin list: the item in line 2 lacks a name or a path\n"},
        {withItem("name='a' path='/none.so'/><item name='b'"), "plugin b: " + place("/none.so") + " is missing\n"},
        {withItem("name='a' path='/none.so'"), "plugin a: " + place("/none.so") + " is missing\n"},
        {withItem("name='a' path='/odm'"), "plugin a: " + place("/odm") + " is not a regular file\n"},
        {withItem("name='a' path='/text.so'"),
         "plugin a: " + place("/text.so") + " is not a library for this machine\n"},
        {withItem("name='a' path='/foreign.so'"),
         "plugin a: " + place("/foreign.so") + " is not a library for this machine\n"},
    };
    EXPECT_THAT(serveAndEnd({}), HasSubstr(" W subsysd: " + list + " is missing\n"));
    for (const auto& [text, line] : cases) {
        writeList(text);
        EXPECT_THAT(serveAndEnd({}), HasSubstr(" W subsysd: " + line));
    }
    writeList(withItem("name='libiccapis' path='/good.so'"));
    const std::string output = serveAndEnd({});
    EXPECT_THAT(output, AllOf(Not(HasSubstr(" W ")), Not(HasSubstr("HostTestComponent"))));
}

TEST_F(Subsysd, Load_WhenTheLibraryIsNoLibrary_ThenItFailsWithItsPathAndWhy) {
    mDevice.write("/text.so", "x");
    mDevice.makeDirectory("/folder");
    for (const auto& [file, why] :
         {std::pair("/missing.so", ""), {"/text.so", ""}, {"/folder", "not a regular file"}}) {
        expectEnd({"--load", COMPONENT_LIBRARY, "--load", place(file)}, EXIT_FAILURE,
                  " E subsysd: can't load component library " + place(file) + ": " + why);
    }
}

TEST_F(Subsysd, Load_WhenTheLibraryIsAComponentLibrary_ThenItsComponentStartsOnce) {
    const std::filesystem::path library = COMPONENT_LIBRARY;
    std::filesystem::current_path(library.parent_path());
    setenv("SUBSYS_DEVICE_ROOT", "/", 1);
    const std::string output =
        serveAndEnd({"--device", mDevice.path(), "--load", library.filename(), "--load", library});
    EXPECT_THAT(output, HasSubstr("HostTestComponent: loaded: looper yes, device " + mDevice.path().string() + "\n"));
    EXPECT_THAT(output, HasSubstr(" W subsysd: component library " COMPONENT_LIBRARY " adds no component\n"));
    EXPECT_THAT(output, HasSubstr("HostTestComponent: init 0\n"));
}

TEST_F(Subsysd, LoadDir_WhenItHasLibrariesOrNone_ThenEachInNameOrderAndALineForNone) {
    mDevice.copy("/libraries/c.so", COMPONENT_LIBRARY);
    mDevice.copy("/libraries/notes.txt", COMPONENT_LIBRARY);
    for (const char* name : {"b.so", "d.so", "a.so"}) mDevice.write(std::string("/libraries/") + name, "no library");
    const std::string libraries = place("/libraries"), empty = mDevice.path(), missing = place("/missing");
    const std::string output = serveAndEnd({"--load-dir", libraries, "--load-dir", empty, "--load-dir", missing});
    const auto fault = [&](const char* name) {
        return "can't load component library " + libraries + "/" + name + ": .*";
    };
    EXPECT_THAT(output, ContainsRegex(fault("a.so") + "\n.*" + fault("b.so") + "\n.*HostTestComponent: loaded.*\n.*" +
                                      fault("d.so") + "\n"));
    EXPECT_THAT(output, Not(AnyOf(HasSubstr("notes.txt"), HasSubstr("adds no component"))));
    EXPECT_THAT(output, HasSubstr(" W subsysd: no component library in " + empty + ": it has no *.so\n"));
    EXPECT_THAT(output, HasSubstr(" W subsysd: no component library in " + missing + ": No such file or directory\n"));
}

TEST_F(Subsysd, LogLevel_WhenRaisedOrLowered_ThenLinesOfThatLevelUp) {
    const std::string debugLine = " D SubsysService: SubsysService create\n";
    const std::string output = serveAndEnd({"--log-level", "debug"});
    EXPECT_THAT(output, HasSubstr(debugLine));
    EXPECT_THAT(output, ContainsRegex("[0-9:]{8}\\.[0-9]{3} +[0-9]+ D SubsysService: "));
    EXPECT_THAT(serveAndEnd({}), Not(HasSubstr(debugLine)));
    EXPECT_THAT(serveAndEnd({"--log-level", "error", "--load", COMPONENT_LIBRARY}),
                Not(HasSubstr("HostTestComponent")));
}

}  // namespace
