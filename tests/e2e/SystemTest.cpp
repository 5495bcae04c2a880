#include "tests/e2e/System.h"

namespace test {
namespace {

constexpr int KILLED = 128 + SIGKILL;
constexpr int NO_SERVICE = 69;
constexpr int OTHER_CLIENT = 75;

TEST_F(System, Request_WhenSent_ThenItsAnswer) {
    start();
    const Command commands[] = {
        {"status", 0, {"served [^\n]*version=5 [^\n]*pid=" + std::to_string(mDaemon->pid())}},
        {"dump",
         0,
         {"interface.version: 5\n", "rf.response: none\n", "plugin.0: libiccapis, ", "daemon.log-level: debug\n",
          "looper.[0-9]: subsysd, thread " + std::to_string(mDaemon->pid()) +
              ", [0-9]+ waiting, (idle|runs [^\n]* ms)\n",
          "looper.[0-9]: HandlerThread, thread ", "binder.threads: [1-5] of 5, [1-5] busy\n",
          "peer.[0-9]+: 0 calls waiting, [0-9]+ bytes unread, 0 undelivered\n"}},
        {"--json dump", 0, {"\\{[^\n]*\"interface.version\":\"5\"[^\n]*\\}\n"}},
        {"log loud", 2, {"LEVEL: expected debug, info, warn, error, not 'loud'\n"}},
        {"log error log debug", 0, {"daemon.log-level: error\ndaemon.log-level: debug\n"}},
        {"get-lcd-info --type 1", 0, {"getLcdInfoResponse #1 SUCCESS lcdInfo=\"SIM_FHD_AMOLED_V2\""}},
        {"get-swtp-status", 1, {"getSwtpStatusResponse #1 NOT_SUPPORTED"}},
        {"--json --serial 7 get-lcd-info get-nvram-data --id 7 --size 16",
         1,
         {R"("getLcdInfoResponse".*"serial":7)", R"("getNvramDataResponse".*"serial":8,"error":1)"}},
        {"get-icc-state", 0, {"getIccStateResponse #1 SUCCESS"}},
        {"set-icc-satellite-ant-state --technology 1 --antenna 2 --state 3", 0, {"SUCCESS"}},
        {"set-icc-wifi-ant-state --antenna 1 --state 1", 1, {"NOT_SUPPORTED"}},
        {"set-icc-tuning-state --technology 1 --band 3 --antenna 2 --state 1", 1, {"NOT_SUPPORTED"}},
        {"send-icc-cmd --req-id 5 --data 0a0b --timeout-ms 1000", 0, {"SUCCESS [^\n]*0a0b"}},
        {"--json send-icc-cmd --req-id 1004", 0, {R"("data":"51")"}},
        {"send-icc-cmd --req-id 1000 --data 01 send-icc-cmd --req-id 1999",
         1,
         {"#1 GENERIC_FAILURE", "#2 NOT_SUPPORTED"}},
        {"--json send-icc-meta-cmd --id 1 --token 9 --type 2 --req-id 5 --data 0a",
         0,
         {R"("callback":"onIccMetaResp".*"token":9)"}},
        {"watch --count 1 --for 10", 0, {"sendSubsysStateChanged state=true"}},
    };
    for (const Command& command : commands) expectRun(command);
}

TEST_F(System, KillProcess_WhenTheNameIsListed_ThenTheProcessIsKilled) {
    start();
    Process victim({"/bin/sleep", "600"});
    const std::string request = "kill-process --pid " + std::to_string(victim.pid());
    expectRun({request + " --name init", 1, {"GENERIC_FAILURE"}});
    EXPECT_EQ(kill(victim.pid(), 0), 0);
    expectRun({request + " --name vendor.dpmd", 0, {"SUCCESS"}});
    EXPECT_EQ(victim.wait(), KILLED);
}

TEST_F(System, Client_WhenKilled_ThenTheNextIsServed) {
    start();
    Client client("watch");
    ASSERT_TRUE(client.awaitOutput("sendSubsysStateChanged state=true"));
    client.end();
    expectLog("SubsysService: SubsysService::serviceDied: Client died. Cleaning up callbacks");
    expectRun({"get-lcd-info", 0, {"SUCCESS"}});
}

TEST_F(System, RfClient_WhenAnotherLives_ThenRefusedOrTakenOverAndTheWatchComesBack) {
    start();
    Client watch("--json watch");
    ASSERT_TRUE(watch.awaitOutput("sendSubsysStateChanged")) << watch.output();
    const Command refused{"get-lcd-info",
                          OTHER_CLIENT,
                          {"get-lcd-info: pid " + std::to_string(watch.pid()) +
                           " .subsysctl. is the RF client; --take-over takes its place"}};
    expectRun(refused);
    Client other("--take-over watch");
    EXPECT_TRUE(other.awaitOutput("took the RF client's place of pid " + std::to_string(watch.pid())))
        << other.output();
    const std::string by = "\"verb\":\"watch\",\"pid\":" + std::to_string(other.pid()) + ",\"name\":\"subsysctl\"";
    EXPECT_TRUE(watch.awaitOutput("{\"note\":\"replaced\"," + by)) << watch.output();
    other.end();
    EXPECT_TRUE(watch.awaitOutput("{\"note\":\"registered\"," + by)) << watch.output();
    expectRun(refused);
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
}

// A meta command takes no client's place.
TEST_F(System, Events_WhenRequestsCauseThem_ThenTheyReachTheWatch) {
    script("icc on iccReloadConfig event perc size=2 entries=010203040506");
    start();
    Client watch("watch");
    expectLog("IccProxy: registerIccInfoChangedInd cnt");
    expectRun({"send-icc-meta-cmd --token 1 --req-id 1003 --data 01020304", 0, {"onIccMetaResp SUCCESS"}});
    expectRun({"send-icc-meta-cmd --token 2 --req-id 1001", 0, {"onIccMetaResp SUCCESS"}});
    EXPECT_TRUE(watch.awaitOutput("notifyIccPercStateChangedInd")) << watch.output();
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
    expectPatterns(watch, {"sendSubsysStateChanged", "sendiccStateChanged", "notifyIccInfoChanged [^\n]*01020304"});
}

TEST_F(System, Ims_WhenACallIsMade_ThenAnswersAndEventsReachBothClients) {
    start();
    Client watch("watch --ims --no-rf");
    expectLog("ImsOrtcServiceIndication: set cb:0");
    expectRun(
        {"set-call-info --call-id 1 --text1 alice --value64 5 set-ortc-room-info --call-id 1 --room-id 7 --action 1",
         0,
         {"setCallInfoResponse #1 SUCCESS", "setOrtcRoomInfoResponse #2 SUCCESS"}});
    expectLog("ImsOrtcServiceIndication: client death:1");
    expectLog("ImsOrtcServiceResponse: client death:1");
    expectRun(
        {"send-ims-rtp-data --call-id 1 --data 010203 --data-len 3 "
         "set-ims-rtp-remote-pub-ip-addr --call-id 1 --rtp-port 5004 --ip-addr 198.51.100.9 "
         "send-ims-rtp-redun-signal-msg --msg-field1 1 --msg hello",
         0,
         {"sendImsRtpDataResponse #1 SUCCESS", "setImsRtpRemotePubIpAddrResponse #2 SUCCESS",
          "sendImsRtpRedunSignalMsgResponse #3 SUCCESS"}});
    EXPECT_TRUE(watch.awaitOutput("recvImsRtpRedunSignalMsgInd")) << watch.output();
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
    expectPatterns(watch, {"notifyOrtcStatus", "notifyConnectInfo [^\n]*room 7", "recvImsRtpData [^\n]*010203",
                           "LocalPubIpAddrChanged [^\n]*192.0.2.1", "recvImsRtpRedunSignalMsgInd [^\n]*hello"});
}

TEST_F(System, Ims_WhenTwoClientsLive_ThenAThirdIsRefusedUntilOneDies) {
    start();
    Client first("watch --ims --no-rf");
    expectLog("ImsOrtcServiceIndication: set cb:0");
    Client second("watch --ims --no-rf");
    expectLog("ImsOrtcServiceIndication: set cb:1");
    const std::string holders = "pid " + std::to_string(first.pid()) + " .subsysctl. and pid " +
                                std::to_string(second.pid()) + " .subsysctl. are the IMS clients";
    for (const char* verb : {"set-call-info", "set-ims-ortc-callback"}) expectRun({verb, OTHER_CLIENT, {holders}});
    second.end();
    expectLog("ImsOrtcServiceIndication: client death:1");
    expectLog("ImsOrtcServiceResponse: client death:1");
    expectRun({"set-call-info --call-id 2", 0, {"setCallInfoResponse #1 SUCCESS"}});
}

TEST_F(System, Daemon_WhenKilled_ThenTheNextTakesItsName) {
    start();
    Client watch("watch");
    ASSERT_TRUE(watch.awaitOutput("sendSubsysStateChanged"));
    mDaemon->end();
    EXPECT_EQ(watch.wait(), NO_SERVICE);
    EXPECT_FALSE(std::filesystem::is_empty(mNames.path()));
    expectRun({"get-lcd-info", NO_SERVICE, {"no such service"}});
    start();
    expectRun({"get-lcd-info", 0, {"SUCCESS"}});
}

}  // namespace
}  // namespace test
