#include "service/SubsysServiceIndication.h"
#include "service/SubsysServiceResponse.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SubsysClient.h"

#include <android/binder_auto_utils.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace test::pkg;
using ndk::ScopedAStatus;
using test::Indication;
using test::Response;

namespace {

constexpr auto SUCCESS = SUBSYS_Errno::SUCCESS;

IccStateInfo someState() {
    IccStateInfo state;
    state.state = 3;
    state.modeValues = {5};
    return state;
}

class SubsysServiceChannelsTest : public testing::Test {
protected:
    test::LogCapture log;
    mindroid::sp<SubsysServiceResponse> response = SubsysServiceResponse::getInstance();
    mindroid::sp<SubsysServiceIndication> indication = SubsysServiceIndication::getInstance();
    std::shared_ptr<test::SubsysResponseClient> responses = ndk::SharedRefBase::make<test::SubsysResponseClient>();
    std::shared_ptr<test::SubsysIndicationClient> indications =
        ndk::SharedRefBase::make<test::SubsysIndicationClient>();
};

SubsysResponseInfo header(int32_t serial, SUBSYS_Errno error = SUCCESS) {
    SubsysResponseInfo info;
    info.serial = serial;
    info.error = error;
    return info;
}

IccRespInfo answer(int8_t reqId, std::vector<uint8_t> data) {
    IccRespInfo info;
    info.reqId = reqId;
    info.data = std::move(data);
    return info;
}

struct ResponseRow {
    std::function<ScopedAStatus(SubsysServiceResponse&)> call;
    Response expected;
};

std::vector<ResponseRow> responseRows() {
    static const uint8_t sBytes[] = {'a', 0, 'b', 0x7F};
    using Channel = SubsysServiceResponse;
    return {
        {[](Channel& c) { return c.getSwtpStatusResponse(1, SUCCESS, 0xFF); },
         {"getSwtpStatusResponse", header(1), int8_t{-1}}},
        {[](Channel& c) { return c.getLcdInfoResponse(2, SUCCESS, "lcd"); },
         {"getLcdInfoResponse", header(2), std::string("lcd")}},
        {[](Channel& c) { return c.setMipiFreqClkResponse(-3, SUCCESS); }, {"setMipiFreqClkResponse", header(-3)}},
        {[](Channel& c) { return c.setOscFreqClkResponse(4, SUCCESS); }, {"setOscFreqClkResponse", header(4)}},
        {[](Channel& c) { return c.getNvramDataResponse(5, SUCCESS, sBytes, 4); },
         {"getNvramDataResponse", header(5), std::string("a\0b\x7F", 4)}},
        {[](Channel& c) { return c.setIccTuningStateResponse(6, SUCCESS); }, {"setIccTuningStateResponse", header(6)}},
        {[](Channel& c) { return c.setIccWifiAntStateResponse(7, SUCCESS); },
         {"setIccWifiAntStateResponse", header(7)}},
        {[](Channel& c) { return c.setIccSatelliteAntStateResponse(8, SUCCESS); },
         {"setIccSatelliteAntStateResponse", header(8)}},
        {[](Channel& c) { return c.getIccStateResponse(9, SUCCESS, someState()); },
         {"getIccStateResponse", header(9), someState()}},
        {[](Channel& c) { return c.killProcessResponse(10, SUCCESS); }, {"killProcessResponse", header(10)}},
        {[](Channel& c) { return c.sendIccCmdResponse(11, SUCCESS, 0x1234, sBytes, 2); },
         {"sendIccCmdResponse", header(11), answer(0x34, {'a', 0})}},
        {[](Channel& c) { return c.sendIccCmdResponse(12, SUCCESS, -1, nullptr, 0); },
         {"sendIccCmdResponse", header(12), answer(-1, {})}},
    };
}

TEST_F(SubsysServiceChannelsTest, Respond_WhenAClientComesAndGoes_ThenItGetsHeaderAndValueAndTheRestIsSilence) {
    for (const ResponseRow& row : responseRows()) {
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
        SubsysResponseInfo info = header(5, SUBSYS_Errno(77));
        info.type = 77;
        populateResponseInfo(info, 1, SUBSYS_Errno(error));
        const SUBSYS_Errno expected = error >= 0 && error <= 9 ? SUBSYS_Errno(error) : SUBSYS_Errno::GENERIC_FAILURE;
        EXPECT_EQ(info, header(1, expected)) << error;
    }
    response->setCallback(responses);
    (void)response->setOscFreqClkResponse(1, SUBSYS_Errno(12));
    EXPECT_EQ(responses->responses.all().at(0).info, header(1, SUBSYS_Errno::GENERIC_FAILURE));
}

TEST_F(SubsysServiceChannelsTest, GetNvramDataResponse_WhenEmpty_ThenErrorLineAndEmptyData) {
    response->setCallback(responses);
    const uint8_t byte = 1;
    (void)response->getNvramDataResponse(1, SUCCESS, nullptr, 0);
    (void)response->getNvramDataResponse(1, SUCCESS, &byte, 0);
    const Response expected{"getNvramDataResponse", header(1), std::string()};
    EXPECT_EQ(responses->responses.all(), (std::vector<Response>{expected, expected}));
    EXPECT_EQ(log.count("SubsysServiceResponse", "getNvramDataResponse getNvramDataResponse bufInfo is NULL !",
                        ANDROID_LOG_ERROR),
              2u);
}

// Takes the data that the binder would send, and fails as it would for other data.
class RemoteResponse : public ISubsysResponseDefault {
public:
    std::vector<std::string> taken;

    ScopedAStatus getNvramDataResponse(const SubsysResponseInfo&, const std::string& data) override {
        const ndk::ScopedAParcel parcel(AParcel_create());
        const binder_status_t status = ndk::AParcel_writeString(parcel.get(), data);
        if (status == STATUS_OK) taken.push_back(data);
        return ScopedAStatus::fromStatus(status);
    }
};

TEST_F(SubsysServiceChannelsTest, GetNvramDataResponse_WhenTheBinderRefusesItsEnd_ThenTheRestIsSent) {
    const auto remote = ndk::SharedRefBase::make<RemoteResponse>();
    response->setCallback(remote);
    for (const std::string& data : {std::string("\0\xff\x80", 3), std::string("\0\xff\xe2\x82", 4)}) {
        (void)response->getNvramDataResponse(1, SUCCESS, reinterpret_cast<const uint8_t*>(data.data()),
                                             static_cast<uint32_t>(data.size()));
    }
    EXPECT_EQ(remote->taken, (std::vector<std::string>{{"\0\xff\x80", 3}, {"\0\xff", 2}}));
    EXPECT_EQ(log.lines(),
              (std::vector<test::LogLine>{{ANDROID_LOG_ERROR, "SubsysServiceResponse",
                                           "getNvramDataResponse ends inside a UTF-8 sequence, sent 2 of 4 bytes"}}));
}

struct IndicationRow {
    std::function<void(SubsysServiceIndication&)> call;
    Indication expected;
};

std::vector<IndicationRow> indicationRows() {
    using Channel = SubsysServiceIndication;
    IccPerceptionInfo perception;
    IccIndInfo info;
    info.id = 4;
    info.data = {1, 2};
    return {
        {[](Channel& c) { c.sendSubsysStateChanged(5); }, {"sendSubsysStateChanged", true}},
        {[](Channel& c) { c.sendSubsysStateChanged(0); }, {"sendSubsysStateChanged", false}},
        {[](Channel& c) { c.sendSwtpStatusChanged(0x80); }, {"sendSwtpStatusChanged", int8_t{-128}}},
        {[](Channel& c) { c.sendiccStateChanged(someState()); }, {"sendiccStateChanged", someState()}},
        {[=](Channel& c) { c.notifyIccPercStateChangedInd(perception); }, {"notifyIccPercStateChangedInd", perception}},
        {[=](Channel& c) { c.notifyIccInfoChanged(info); }, {"notifyIccInfoChanged", info}},
    };
}

TEST_F(SubsysServiceChannelsTest, Indicate_WhenAClientComes_ThenOneErrorLineBeforeAndTheEventAfter) {
    const test::LogLine none{ANDROID_LOG_ERROR, "SubsysServiceIndication", "mSubsysIndication null"};
    for (const IndicationRow& row : indicationRows()) {
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
    const auto respond = [&] {
        for (size_t i = 0; i < ROUNDS; ++i) (void)response->killProcessResponse(1, SUCCESS);
    };
    std::thread first(respond);
    std::thread second(respond);
    for (size_t i = 0; i < ROUNDS; ++i) response->setCallback(i % 2 == 0 ? successor : responses);
    first.join();
    second.join();
    EXPECT_EQ(responses->responses.count() + successor->responses.count(), 2 * ROUNDS);
}

}  // namespace
