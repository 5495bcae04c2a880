#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_manager.h>

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Process.h"

namespace {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;
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

    const std::filesystem::path folder;
};

TEST_F(Subsysd, Signal_WhenStartingOrServing_ThenItEndsWithZero) {
    for (const int number : {SIGTERM, SIGINT}) Daemon().expectEnd(number, 0);
    Daemon({"--log-level", "debug"}, "create PluginManagerComponent").expectEnd(SIGTERM, 0);
}

TEST_F(Subsysd, Signal_WhenAComponentNeverReturns_ThenItEndsByForce) {
    setenv("HOST_TEST_HANGS", "1", 1);
    Daemon daemon({"--load", COMPONENT_LIBRARY}, "HostTestComponent: init 0");
    daemon.expectEnd(SIGTERM, 3);
    EXPECT_THAT(daemon.output(),
                HasSubstr(" E subsysd: the main thread is stuck: ended by force 3 s after the signal\n"));
}

TEST_F(Subsysd, Log_WhenNobodyReads_ThenRequestsAreServedAndLinesAreDropped) {
    Daemon daemon({"--log-level", "debug"});
    const auto service = ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(NAME.c_str())));
    ASSERT_NE(service, nullptr);
    constexpr int MORE_LINES_THAN_A_PIPE_HOLDS = 2000;
    for (int i = 0; i < MORE_LINES_THAN_A_PIPE_HOLDS; ++i) ASSERT_TRUE(service->setCallback(nullptr, nullptr).isOk());
    std::atomic<bool> isRead = false;
    std::thread client([&] {
        while (!isRead) EXPECT_TRUE(service->setCallback(nullptr, nullptr).isOk());
    });
    EXPECT_TRUE(daemon.awaitOutput(" log lines were dropped\n"));
    isRead = true;
    client.join();
}

TEST_F(Subsysd, Start_WhenItSaysThatItServes_ThenAClientReachesIt) {
    const Daemon daemon;
    const auto service = ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(NAME.c_str())));
    ASSERT_NE(service, nullptr);
    int32_t version = 0;
    EXPECT_TRUE(service->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, ISubsys::version);
    EXPECT_TRUE(service->getSwtpStatus(1).isOk());
}

TEST_F(Subsysd, Start_WhenALiveDaemonHoldsTheName_ThenItFailsAndTheFirstStays) {
    const Daemon first;
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": another process serves it");
    const ndk::SpAIBinder service(AServiceManager_checkService(NAME.c_str()));
    EXPECT_EQ(AIBinder_ping(service.get()), STATUS_OK);
    first.signal(SIGSTOP);
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": another process serves it");
    first.signal(SIGCONT);
}

TEST_F(Subsysd, Start_WhenTheHolderWasKilled_ThenTheNameIsTakenOver) {
    Daemon().end();
    serveAndEnd({});
}

TEST_F(Subsysd, Start_WhenTheFolderOfNamesIsAFile_ThenItFails) {
    std::ofstream(folder / "names") << "no folder";
    expectEnd({}, EXIT_FAILURE, "subsysd: can't publish " + NAME + ": the folder of service names is not usable");
}

TEST_F(Subsysd, Start_WhenOptionsAreWrong_ThenUsageError) {
    constexpr int USAGE = 2;
    expectEnd({"--nonsense"}, USAGE, "--nonsense");
    expectEnd({"argument"}, USAGE, "argument");
    expectEnd({"--device"}, USAGE, "--device");
    expectEnd({"--load"}, USAGE, "--load");
    expectEnd({"--log-level", "loud"}, USAGE, "loud not in");
    expectEnd({"--help"}, EXIT_SUCCESS, "SUBSYS_DEVICE_ROOT");
}

TEST_F(Subsysd, Start_WhenThereIsNoDeviceFolder_ThenItSaysSo) {
    std::ofstream(folder / "file") << "no folder";
    for (const std::string& missing : {(folder / "missing").string(), (folder / "file").string()}) {
        expectEnd({"--device", missing}, EXIT_FAILURE, "subsysd: no device folder " + missing + "\n");
        setenv("SUBSYS_DEVICE_ROOT", missing.c_str(), 1);
        expectEnd({}, EXIT_FAILURE, "subsysd: no device folder " + missing + "\n");
    }
    expectEnd({"--device", ""}, EXIT_FAILURE, "subsysd: no device folder ''\n");
}

TEST_F(Subsysd, Device_WhenGiven_ThenThePluginListComesFromIt) {
    std::ofstream(folder / "device/odm/etc/plugin_config.xml")
        << R"(<plugin_config><item name="libtest" path="/vendor/lib64/libtest.so"/></plugin_config>)";
    setenv("SUBSYS_DEVICE_ROOT", folder.c_str(), 1);
    EXPECT_THAT(serveAndEnd({"--device", device()}), HasSubstr("configName =libtest !"));
    EXPECT_THAT(serveAndEnd({}), Not(HasSubstr("libtest")));
    unsetenv("SUBSYS_DEVICE_ROOT");
    EXPECT_THAT(serveAndEnd({}), Not(HasSubstr("libtest")));
}

TEST_F(Subsysd, Load_WhenTheLibraryIsAComponentLibrary_ThenItsComponentStarts) {
    const std::string output = serveAndEnd({"--device", device(), "--load", COMPONENT_LIBRARY});
    EXPECT_THAT(output, HasSubstr("HostTestComponent: loaded: looper yes, device " + device() + "\n"));
    EXPECT_THAT(output, HasSubstr("HostTestComponent: init 0\n"));
}

TEST_F(Subsysd, Load_WhenThePathIsRelative_ThenFromTheWorkingFolder) {
    const std::filesystem::path library = COMPONENT_LIBRARY;
    std::filesystem::current_path(library.parent_path());
    EXPECT_THAT(serveAndEnd({"--load", library.filename()}), HasSubstr("HostTestComponent: init 0\n"));
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
                  "subsysd: can't load a component library: " + path);
    }
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
