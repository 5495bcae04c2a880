#include "tests/support/Process.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_manager.h>

#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
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
    Subsysd() : folder(testing::TempDir() + "subsysd-" + std::to_string(getpid())) {
        std::filesystem::create_directories(folder / "device/odm/etc");
        std::filesystem::create_directories(folder / "libraries");
        setenv("SUBSYS_BINDER_DIR", (folder / "names").c_str(), 1);
        setenv("SUBSYS_DEVICE_ROOT", device().c_str(), 1);
    }
    ~Subsysd() override { std::filesystem::remove_all(folder); }

    [[nodiscard]] std::string device() const { return folder / "device"; }

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
    void writeList(const std::string& text) const { std::ofstream(device() + "/odm/etc/plugin_config.xml") << text; }
    static std::string withItem(const std::string& attributes) {
        return "<plugin_config>\n<item " + attributes + "/></plugin_config>";
    }

    const std::filesystem::path folder;
};

// What a line of the thread's status file says, as that of "SigBlk:".
[[maybe_unused]] std::string statusOf(const std::filesystem::path& task, const std::string& key) {
    std::ifstream status(task / "status");
    std::string word;
    while (status >> word && word != key) {
    }
    status >> word;
    return word;
}

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
    EXPECT_EQ(statusOf("/proc/" + std::to_string(daemon.pid()), "SigBlk:"), "0000000000000000");
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
    const std::string output = serveAndEnd({});
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
}

TEST_F(Subsysd, Start_WhenOptionsAreWrong_ThenTheLineNamesThem) {
    const struct {
        std::vector<std::string> arguments;
        std::string line;
    } cases[] = {
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
    for (const auto& each : cases) expectEnd(each.arguments, USAGE, "subsysd: " + each.line + "\n");
    expectEnd({"--help"}, EXIT_SUCCESS, "SUBSYS_DEVICE_ROOT");
    expectEnd({"--version"}, EXIT_SUCCESS, "subsysd " SUBSYS_VERSION "\n");
}

TEST_F(Subsysd, Start_WhenThereIsNoDeviceFolder_ThenItSaysSo) {
    std::ofstream(folder / "file") << "no folder";
    const auto expectFault = [](const std::string& device, const std::string& fault) {
        const std::string line = "subsysd: can't use the device folder '" + device + "': " + fault + "\n";
        expectEnd({"--device", device}, EXIT_FAILURE, line);
        setenv("SUBSYS_DEVICE_ROOT", device.c_str(), 1);
        if (!device.empty()) expectEnd({}, EXIT_FAILURE, line);
    };
    expectFault(folder / "missing", "No such file or directory");
    expectFault(folder / "file", "Not a directory");
    expectFault("", "Invalid argument");
}

TEST_F(Subsysd, PluginList_WhenFaulty_ThenALineSaysWhy) {
    const std::string list = "plugin list: " + device() + "/odm/etc/plugin_config.xml";
    std::ofstream(device() + "/text.so") << std::string(100, 'x');
    std::ofstream(device() + "/foreign.so") << std::ifstream("/proc/self/exe").rdbuf();
    std::fstream(device() + "/foreign.so").seekp(offsetof(Elf64_Ehdr, e_machine)).write("\xff\xff", 2);
    const struct {
        std::string text;
        std::string line;
    } cases[] = {
        {"<plugin_config", list + " is malformed: XML_ERROR_"},
        {"<other/>", list + " has no item in a plugin_config\n"},
        {withItem("name='a'"), "plugin list: the item in line 2 lacks a name or a path\n"},
        {withItem("name='a' path='/none.so'"), "plugin a: " + device() + "/none.so is missing\n"},
        {withItem("name='a' path='/odm'"), "plugin a: " + device() + "/odm is not a regular file\n"},
        {withItem("name='a' path='/text.so'"),
         "plugin a: " + device() + "/text.so is not a library for this machine\n"},
        {withItem("name='a' path='/foreign.so'"),
         "plugin a: " + device() + "/foreign.so is not a library for this machine\n"},
    };
    EXPECT_THAT(serveAndEnd({}), HasSubstr(" W subsysd: " + list + " is missing\n"));
    for (const auto& each : cases) {
        writeList(each.text);
        EXPECT_THAT(serveAndEnd({}), HasSubstr(" W subsysd: " + each.line));
    }
    std::filesystem::copy_file(COMPONENT_LIBRARY, device() + "/good.so");
    writeList(withItem("name='a' path='/good.so'"));
    const std::string output = serveAndEnd({});
    EXPECT_THAT(output, AllOf(Not(HasSubstr(" W ")), Not(HasSubstr("HostTestComponent"))));
}

TEST_F(Subsysd, Load_WhenTheLibraryIsNoLibrary_ThenItFailsWithItsPath) {
    const auto write = [&](const char* name, const std::string& bytes) { std::ofstream(folder / name) << bytes; };
    write("empty.so", "");
    write("text.so", std::string(10'000, 'x'));
    std::filesystem::copy_file(COMPONENT_LIBRARY, folder / "cut.so");
    std::filesystem::resize_file(folder / "cut.so", 1000);
    ASSERT_EQ(mkfifo((folder / "fifo.so").c_str(), 0600), 0);
    for (const char* name : {"missing.so", "empty.so", "text.so", "cut.so", "fifo.so", "device"}) {
        const std::string path = folder / name;
        expectEnd({"--load", COMPONENT_LIBRARY, "--load", path}, EXIT_FAILURE,
                  " E subsysd: can't load component library " + path + ": ");
    }
}

TEST_F(Subsysd, Load_WhenTheLibraryIsAComponentLibrary_ThenItsComponentStartsOnce) {
    const std::filesystem::path library = COMPONENT_LIBRARY;
    std::filesystem::current_path(library.parent_path());
    setenv("SUBSYS_DEVICE_ROOT", folder.c_str(), 1);
    const std::string output = serveAndEnd({"--device", device(), "--load", library.filename(), "--load", library});
    EXPECT_THAT(output, HasSubstr("HostTestComponent: loaded: looper yes, device " + device() + "\n"));
    EXPECT_THAT(output, HasSubstr(" W subsysd: component library " COMPONENT_LIBRARY " adds no component\n"));
    EXPECT_THAT(output, HasSubstr("HostTestComponent: init 0\n"));
}

TEST_F(Subsysd, LoadDir_WhenItHasLibrariesOrNone_ThenEachInNameOrderAndALineForNone) {
    const auto place = [&](const char* name) { return (folder / "libraries" / name).string(); };
    std::filesystem::copy_file(COMPONENT_LIBRARY, place("c.so"));
    std::filesystem::copy_file(COMPONENT_LIBRARY, place("notes.txt"));
    for (const char* name : {"b.so", "d.so", "a.so"}) std::ofstream(place(name)) << "no library";
    const std::string empty = folder / "device", missing = folder / "missing";
    const std::string output =
        serveAndEnd({"--load-dir", folder / "libraries", "--load-dir", empty, "--load-dir", missing});
    const auto fault = [&](const char* name) { return "can't load component library " + place(name) + ": .*"; };
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
