#include "binder/src/Frame.h"
#include "binder/src/UniqueFd.h"
#include "binder/tests/Peer.h"
#include "tests/support/LogCapture.h"

#include <android/binder_process.h>

#include <fcntl.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <future>

namespace {

using namespace test;

class ServiceManagerTest : public NamesFixture {
protected:
    static binder_exception_t add(const ndk::SpAIBinder& object, const std::string& name) {
        return AServiceManager_addService(object.get(), name.c_str());
    }
    static ndk::SpAIBinder check(const std::string& name) {
        return ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
    }
    static int countOpen() {
        int count = 0;
        for (int fd = 0; fd < 256; ++fd) count += fcntl(fd, F_GETFD) >= 0 ? 1 : 0;
        return count;
    }

    const ndk::SpAIBinder mObject = newEcho(new Echo);
};

TEST_F(ServiceManagerTest, AddService_WhenNameOrObjectIsBad_ThenIllegalArgument) {
    for (const std::string& name : {std::string(), std::string("a b"), std::string("a:b"), std::string("a%b"),
                                    std::string(128, 'a'), std::string("\xc3\xa4")}) {
        EXPECT_EQ(EX_ILLEGAL_ARGUMENT, add(mObject, name)) << name;
        EXPECT_EQ(nullptr, check(name).get());
        EXPECT_EQ(nullptr, AServiceManager_waitForService(name.c_str()));
    }
    EXPECT_EQ(EX_ILLEGAL_ARGUMENT, add(nullptr, "name"));
    EXPECT_EQ(EX_ILLEGAL_ARGUMENT, AServiceManager_addService(mObject.get(), nullptr));
}

TEST_F(ServiceManagerTest, CheckService_WhenRegisteredHere_ThenTheObjectItselfAndTheLastOneWins) {
    EXPECT_EQ(nullptr, check("name").get());
    EXPECT_FALSE(AServiceManager_isDeclared("name"));
    ASSERT_EQ(EX_NONE, add(mObject, "name"));
    EXPECT_EQ(mObject, check("name"));
    EXPECT_TRUE(AServiceManager_isDeclared("name"));
    const ndk::SpAIBinder second = newEcho(new Echo);
    ASSERT_EQ(EX_NONE, add(second, "name"));
    EXPECT_EQ(second, check("name"));
}

TEST_F(ServiceManagerTest, GetService_WhenNamesAreLongOrAlike_ThenEachFindsItsOwn) {
    const std::string longest = std::string(120, 'n') + "/a.b_c-";
    Peer first("serve", longest.c_str());
    Peer second("serve", "a/b");
    Peer third("serve", "..");
    ASSERT_TRUE(first.isReady() && second.isReady() && third.isReady());
    for (const std::string& name : {longest, std::string("a/b"), std::string("..")}) {
        EXPECT_EQ(STATUS_OK, echo(service(name.c_str()), 1)) << name;
    }
    EXPECT_EQ(nullptr, check("a.b").get());
    EXPECT_NE(service("a/b"), service(".."));
}

TEST_F(ServiceManagerTest, AddService_WhenAnotherProcessHoldsTheName_ThenRefusedUntilItDies) {
    const LogCapture log;
    Peer holder("serve", "name");
    ASSERT_TRUE(holder.isReady());
    EXPECT_TRUE(AServiceManager_isDeclared("name"));
    EXPECT_EQ(EX_ILLEGAL_STATE, add(mObject, "name"));
    EXPECT_TRUE(log.has("Binder", "name is not registered: another process holds the name", ANDROID_LOG_WARN));
    EXPECT_TRUE(check("name").get() != nullptr && AIBinder_isRemote(check("name").get()));
    holder.end();
    EXPECT_FALSE(AServiceManager_isDeclared("name"));
    EXPECT_EQ(nullptr, check("name").get()) << "a stale name is no service";
    EXPECT_EQ(EX_NONE, add(mObject, "name"));
    EXPECT_EQ(3, Peer("serve", "name").wait()) << "and is this process's now";
}

TEST_F(ServiceManagerTest, WaitForService_WhenItComesLater_ThenItReturnsThen) {
    auto found = std::async(std::launch::async, [] { return service("late"); });
    EXPECT_EQ(std::future_status::timeout, found.wait_for(std::chrono::milliseconds(20)));
    Peer server("serve", "late");
    ASSERT_EQ(std::future_status::ready, found.wait_for(std::chrono::seconds(10)));
    EXPECT_EQ(STATUS_OK, echo(found.get(), 1));
}

TEST_F(ServiceManagerTest, CheckService_WhenTheServerIsStopped_ThenNullAfterAWhileAndFoundAgain) {
    Peer server("serve", "name");
    ASSERT_TRUE(server.isReady());
    server.stop();
    EXPECT_EQ(nullptr, check("name").get());
    server.resume();
    EXPECT_EQ(STATUS_OK, echo(service("name"), 1));
}

TEST_F(ServiceManagerTest, CheckService_WhenTheServersAnswerComesInPieces_ThenItIsReadWhole) {
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, (mFolder / "socket@name").c_str(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    ASSERT_EQ(0, listen(listener, 1));
    auto found = std::async(std::launch::async, check, "name");
    const binder::UniqueFd server(accept(listener, nullptr, nullptr));
    close(listener);
    binder::Hello hello{};
    ASSERT_EQ(ssize_t{sizeof(hello)}, recv(server.get(), &hello, sizeof(hello), MSG_WAITALL));
    const binder::HelloReply reply{binder::PROTOCOL, 0, 0, {1}};
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&reply);
    for (size_t i = 0; i < sizeof(reply); ++i) {
        int unread = 1;
        ASSERT_EQ(1, send(server.get(), bytes + i, 1, MSG_NOSIGNAL));
        while (unread != 0) ASSERT_EQ(0, ioctl(server.get(), SIOCOUTQ, &unread));
    }
    EXPECT_EQ(ssize_t{sizeof(hello)}, recv(server.get(), &hello, sizeof(hello), MSG_WAITALL)) << "it goes on";
    EXPECT_EQ(binder::HelloKind::Open, hello.kind);
}

TEST_F(ServiceManagerTest, AddService_WhenTheFolderIsNotThisUsersAlone_ThenRefusedAndTheLogSaysWhy) {
    const LogCapture log;
    const auto refused = [&](const std::filesystem::path& folder, const std::string& why) {
        setenv("SUBSYS_BINDER_DIR", folder.c_str(), 1);
        EXPECT_EQ(EX_SECURITY, add(mObject, "name")) << why;
        EXPECT_EQ(nullptr, check("name").get());
        EXPECT_TRUE(log.has("Binder", "the folder of names " + folder.string() + " " + why, ANDROID_LOG_WARN)) << why;
    };
    const auto link = mFolder / "link";
    std::filesystem::create_directory(mFolder / "own");
    std::filesystem::create_directory_symlink(mFolder / "own", link);
    refused(link, "is a link");
    std::ofstream(mFolder / "file").close();
    refused(mFolder / "file", "is no folder");
    ASSERT_EQ(0, chmod((mFolder / "own").c_str(), 0750));
    refused(mFolder / "own", "is open to other users");
    if (geteuid() != 0) refused("/", "belongs to another user");
    setenv("SUBSYS_BINDER_DIR", mFolder.c_str(), 1);
    EXPECT_EQ(EX_NONE, add(mObject, "name"));
}

TEST_F(ServiceManagerTest, AddService_WhenItsFilesAreDeletedLater_ThenTheyAreMadeAgain) {
    const LogCapture log;
    ASSERT_EQ(EX_NONE, add(mObject, "name"));
    const int before = countOpen();
    std::filesystem::remove(mFolder / "lock@name");
    std::filesystem::remove(mFolder / "socket@name");
    EXPECT_TRUE(log.await("Binder", "the lock file of name was deleted: made again"));
    EXPECT_TRUE(log.await("Binder", "the socket of name was deleted: made again"));
    EXPECT_EQ(before, countOpen()) << "the old ones are closed";
    ABinderProcess_startThreadPool();
    EXPECT_TRUE(Peer("lend", "name").isReady()) << "and it is found";
    EXPECT_EQ(3, Peer("serve", "name").wait()) << "and still this process's";
    std::filesystem::remove_all(mFolder);
    EXPECT_TRUE(log.await("Binder", "the folder of names was deleted: no service of this process is found any more"));
}

TEST_F(ServiceManagerTest, AddService_WhenDescriptorsRunOutAfterItsSocketIsDeleted_ThenItIsMadeAgainLater) {
    const LogCapture log;
    ASSERT_EQ(EX_NONE, add(mObject, "name"));
    {
        const NoDescriptors none;
        unlink((mFolder / "socket@name").c_str());
        const std::string folder = "the folder of names " + mFolder.string();
        EXPECT_TRUE(log.await("Binder", folder + " cannot be opened: Too many open files", 2)) << "and tried again";
    }
    EXPECT_TRUE(log.await("Binder", "the socket of name was deleted: made again"));
    EXPECT_EQ(0U, log.count("Binder", "the folder of names was deleted: no service of this process is found any more"));
}

TEST_F(ServiceManagerTest, AddService_WhenAnotherProcesssFilesReplaceItsOwn_ThenTheyAreLeftAlone) {
    const LogCapture log;
    ASSERT_EQ(EX_NONE, add(mObject, "name"));
    const NamesFolder others;
    Peer other("serve", "name");
    ASSERT_TRUE(other.isReady());
    setenv("SUBSYS_BINDER_DIR", mFolder.c_str(), 1);
    for (const char* const file : {"lock@name", "socket@name"}) {
        std::filesystem::create_hard_link(others.path() / file, mFolder / "link");
        std::filesystem::rename(mFolder / "link", mFolder / file);
    }
    EXPECT_TRUE(log.await("Binder",
                          "the lock file of name was deleted and cannot be made again: another process "
                          "holds the name"));
    EXPECT_EQ(EX_NONE, add(mObject, "next")) << "after that";
    EXPECT_EQ(2U, std::filesystem::hard_link_count(mFolder / "socket@name")) << "still the other's";
}

TEST_F(ServiceManagerTest, AddService_WhenTheNameCannotBeTaken_ThenNothingStaysBehindInTheFolder) {
    std::filesystem::create_directory(mFolder / "socket@name");
    EXPECT_EQ(EX_UNSUPPORTED_OPERATION, add(mObject, "name"));
    for (const auto& each : std::filesystem::directory_iterator(mFolder)) {
        EXPECT_FALSE(each.path().filename().string().starts_with("new@"));
    }
}

TEST_F(ServiceManagerTest, Fork_WhenTheChildRunsOn_ThenItHoldsNoneOfTheServicesDescriptors) {
    const int before = countOpen();
    ASSERT_EQ(EX_NONE, add(mObject, "name"));
    ABinderProcess_startThreadPool();
    Peer client("lend", "name");
    EXPECT_GT(countOpen(), before);
    const pid_t child = fork();
    if (child == 0) _exit(countOpen() - before - 1);  // the client's output alone
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
}

TEST_F(ServiceManagerTest, CheckService_WhenOneProcessServesTwoNames_ThenOneSessionCarriesBoth) {
    auto* own = new Echo;
    const ndk::SpAIBinder object = newEcho(own);
    ASSERT_EQ(EX_NONE, add(object, "one"));
    ASSERT_EQ(EX_NONE, add(object, "two"));
    ABinderProcess_startThreadPool();
    Peer client("lend", "one");
    ASSERT_TRUE(client.isReady());
    const ndk::SpAIBinder lent = own->kept();
    ASSERT_EQ(STATUS_OK, keep(lent, object));
    EXPECT_EQ(STATUS_OK, callForInt(lent, OPEN, [](AParcel* in) { ndk::AParcel_writeString(in, std::string("two")); }));
    EXPECT_EQ(object, own->kept()) << "it came home, through either name";
    own->keep(nullptr);
}

}  // namespace
