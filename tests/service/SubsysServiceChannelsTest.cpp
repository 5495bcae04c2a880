#include "service/channel/SubsysServiceIndication.h"
#include "service/channel/SubsysServiceResponse.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SubsysClient.h"
#include "tests/support/Threads.h"

#include <android/binder_auto_utils.h>
#include <android/binder_parcel_utils.h>

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

using namespace test::interface;
using ndk::ScopedAStatus;
using test::Indication;
using test::Response;

namespace {

constexpr auto SUCCESS = SUBSYS_Errno::SUCCESS;

const IccStateInfo STATE{3, 0, 0, {}, {5}};
const IccPerceptionInfo PERCEPTION{{{1, 2, 3}}};
const IccIndInfo INFO{4, {1, 2}};

class SubsysServiceChannelsTest : public testing::Test {
protected:
    test::LogCapture log;
    mindroid::sp<SubsysServiceResponse> response = SubsysServiceResponse::getInstance();
    mindroid::sp<SubsysServiceIndication> indication = SubsysServiceIndication::getInstance();
    std::shared_ptr<test::SubsysResponseClient> responses = ndk::SharedRefBase::make<test::SubsysResponseClient>();
    std::shared_ptr<test::SubsysIndicationClient> indications =
        ndk::SharedRefBase::make<test::SubsysIndicationClient>();
};

TEST_F(SubsysServiceChannelsTest, Respond_WhenAClientComesAndGoes_ThenItGetsHeaderAndValueAndTheRestIsSilence) {
    static const uint8_t sBytes[] = {'a', 0, 0xFF, 0x80, 0xE2, 0x82};  // no text
    const struct {
        std::function<ScopedAStatus(SubsysServiceResponse&)> call;
        Response expected;
    } rows[] = {
        {[](auto& c) { return c.getSwtpStatusResponse(1, SUCCESS, 0xFF); },
         {"getSwtpStatusResponse", {0, 1, SUCCESS}, int8_t{-1}}},
        {[](auto& c) { return c.getLcdInfoResponse(2, SUCCESS, "lcd"); },
         {"getLcdInfoResponse", {0, 2, SUCCESS}, std::string("lcd")}},
        {[](auto& c) { return c.setMipiFreqClkResponse(-3, SUCCESS); }, {"setMipiFreqClkResponse", {0, -3, SUCCESS}}},
        {[](auto& c) { return c.setOscFreqClkResponse(4, SUCCESS); }, {"setOscFreqClkResponse", {0, 4, SUCCESS}}},
        {[](auto& c) { return c.getNvramDataResponse(5, SUCCESS, sBytes, 6); },
         {"getNvramDataResponse", {0, 5, SUCCESS}, std::string("a\0\xff\x80\xe2\x82", 6)}},
        {[](auto& c) { return c.setIccTuningStateResponse(6, SUCCESS); },
         {"setIccTuningStateResponse", {0, 6, SUCCESS}}},
        {[](auto& c) { return c.setIccWifiAntStateResponse(7, SUCCESS); },
         {"setIccWifiAntStateResponse", {0, 7, SUCCESS}}},
        {[](auto& c) { return c.setIccSatelliteAntStateResponse(8, SUCCESS); },
         {"setIccSatelliteAntStateResponse", {0, 8, SUCCESS}}},
        {[](auto& c) { return c.getIccStateResponse(9, SUCCESS, STATE); },
         {"getIccStateResponse", {0, 9, SUCCESS}, STATE}},
        {[](auto& c) { return c.killProcessResponse(10, SUCCESS); }, {"killProcessResponse", {0, 10, SUCCESS}}},
        {[](auto& c) { return c.sendIccCmdResponse(11, SUCCESS, 0x1234, sBytes, 2); },
         {"sendIccCmdResponse", {0, 11, SUCCESS}, IccRespInfo{0x34, {'a', 0}}}},
        {[](auto& c) { return c.sendIccCmdResponse(12, SUCCESS, -1, nullptr, 0); },
         {"sendIccCmdResponse", {0, 12, SUCCESS}, IccRespInfo{-1, {}}}},
    };
    for (const auto& row : rows) {
        responses->responses.clear();
        response->setCallback(responses);
        EXPECT_TRUE(row.call(*response).isOk());
        response->setCallback(nullptr);
        EXPECT_TRUE(row.call(*response).isOk());
        EXPECT_EQ(responses->responses.all(), std::vector<Response>{row.expected}) << row.expected.method;
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SubsysServiceChannelsTest, PopulateResponseInfo_WhenErrorIsUnknown_ThenItBecomesGenericFailure) {
    for (const int32_t error : {INT_MIN, -1, 0, 1, 2, 3, 9, 10, 11, 12, INT_MAX}) {
        SubsysResponseInfo info{77, 5, SUBSYS_Errno(77)};
        populateResponseInfo(info, 1, SUBSYS_Errno(error));
        const SUBSYS_Errno expected = error >= 0 && error <= 9 ? SUBSYS_Errno(error) : SUBSYS_Errno::GENERIC_FAILURE;
        EXPECT_EQ(info, (SubsysResponseInfo{0, 1, expected})) << error;
    }
    response->setCallback(responses);
    (void)response->setOscFreqClkResponse(1, SUBSYS_Errno(12));
    EXPECT_EQ(responses->responses.all().at(0).info, (SubsysResponseInfo{0, 1, SUBSYS_Errno::GENERIC_FAILURE}));
}

TEST_F(SubsysServiceChannelsTest, GetNvramDataResponse_WhenEmpty_ThenErrorLineAndEmptyData) {
    response->setCallback(responses);
    const uint8_t byte = 1;
    (void)response->getNvramDataResponse(1, SUCCESS, nullptr, 0);
    (void)response->getNvramDataResponse(1, SUCCESS, &byte, 0);
    const Response expected{"getNvramDataResponse", {0, 1, SUCCESS}, std::string()};
    EXPECT_EQ(responses->responses.all(), (std::vector<Response>{expected, expected}));
    EXPECT_EQ(log.count("SubsysServiceResponse", "getNvramDataResponse getNvramDataResponse bufInfo is NULL !",
                        ANDROID_LOG_ERROR),
              2u);
}

TEST_F(SubsysServiceChannelsTest, Indicate_WhenAClientComes_ThenOneErrorLineBeforeAndTheEventAfter) {
    const struct {
        std::function<void(SubsysServiceIndication&)> call;
        Indication expected;
    } rows[] = {
        {[](auto& c) { c.sendSubsysStateChanged(5); }, {"sendSubsysStateChanged", true}},
        {[](auto& c) { c.sendSubsysStateChanged(0); }, {"sendSubsysStateChanged", false}},
        {[](auto& c) { c.sendSwtpStatusChanged(0x80); }, {"sendSwtpStatusChanged", int8_t{-128}}},
        {[](auto& c) { c.sendiccStateChanged(STATE); }, {"sendiccStateChanged", STATE}},
        {[](auto& c) { c.notifyIccPercStateChangedInd(PERCEPTION); }, {"notifyIccPercStateChangedInd", PERCEPTION}},
        {[](auto& c) { c.notifyIccInfoChanged(INFO); }, {"notifyIccInfoChanged", INFO}},
    };
    const test::LogLine none{ANDROID_LOG_ERROR, "SubsysServiceIndication", "mSubsysIndication null"};
    for (const auto& row : rows) {
        log.clear();
        indications->indications.clear();
        indication->setCallback(nullptr);
        row.call(*indication);
        indication->setCallback(indications);
        row.call(*indication);
        EXPECT_EQ(log.lines(), std::vector<test::LogLine>{none});
        EXPECT_EQ(indications->indications.all(), std::vector<Indication>{row.expected}) << row.expected.method;
    }
}

TEST_F(SubsysServiceChannelsTest, SetCallback_WhenItRacesWithResponses_ThenEachGoesToTheOldOrTheNewClient) {
    constexpr size_t ROUNDS = 2000;
    const auto successor = ndk::SharedRefBase::make<test::SubsysResponseClient>();
    response->setCallback(responses);
    test::inThreads(3, [&](size_t thread) {
        for (size_t i = 0; i < ROUNDS; ++i) {
            if (thread > 0) (void)response->killProcessResponse(1, SUCCESS);
            if (thread == 0) response->setCallback(i % 2 == 0 ? successor : responses);
        }
    });
    EXPECT_EQ(responses->responses.count() + successor->responses.count(), 2 * ROUNDS);
}

}  // namespace
