#include "service/SubsysService.h"

#include "ims/ImsOrtcService.h"
#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "rf/RfSubsysService.h"
#include "service/OsUtils.h"
#include "service/SubsysServiceIndication.h"
#include "service/SubsysServiceResponse.h"
#include "service/SubsysServiceStateTracker.h"

#include <android/binder_manager.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>

using ::mindroid::Log;
using ::mindroid::Message;
using ::mindroid::sp;
using ::ndk::ScopedAStatus;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

namespace {

constexpr int32_t MSG_CLIENT_DEATH = 0;

// A callback without a binder is one of this process, which can't die.
bool isDead(const std::shared_ptr<ISubsysResponse>& response) {
    const ::ndk::SpAIBinder binder = response->asBinder();
    return binder.get() != nullptr && !AIBinder_isAlive(binder.get());
}

// The handler's own status is dropped for a fresh success.
template <typename Handler, typename Method, typename... Args>
ScopedAStatus forward(const sp<Handler>& handler, Method method, const Args&... args) {
    (void)((*handler).*method)(args...);
    return ScopedAStatus::ok();
}

}  // namespace

SubsysService::SubsysServiceHandler::SubsysServiceHandler(SubsysService& service) : mService(&service) {}

void SubsysService::SubsysServiceHandler::handleMessage(const sp<Message>& message) {
    if (message->what == MSG_CLIENT_DEATH) onClientDeath(message);
}

void SubsysService::SubsysServiceHandler::onClientDeath(const sp<Message>& /*message*/) {
    // Only what is stored now counts: a live client is the successor of the one that died.
    const Client client = mService->getClient();
    if (!client.response || isDead(client.response)) mService->forget(client);
}

SubsysService::SubsysService() {
    Log::d(TAG, "SubsysService create");
    mHandler = new SubsysServiceHandler(*this);
    mDeathMonitor = new ::subsys_utils::DeathMonitor();
    mDeathMonitor->registerClientDeathEvent(mHandler, MSG_CLIENT_DEATH, nullptr);
    mSubsysResponse = SubsysServiceResponse::getInstance();
    mSubsysIndication = SubsysServiceIndication::getInstance();
    mStateTracker = new SubsysServiceStateTracker();
    mStateTracker->init();
    mImsOrtcResponse = ImsOrtcServiceResponse::getInstance();
    mImsOrtcIndication = ImsOrtcServiceIndication::getInstance();
    mRfSubsysService = new RfSubsysService();
    mImsOrtcService = new ImsOrtcService();
}

SubsysService::~SubsysService() {
    // No death may reach the handler any more: its way back here ends.
    mDeathMonitor.clear();
    mHandler->removeCallbacksAndMessages();
}

void SubsysService::init() {
    mRfSubsysService->init();
    mImsOrtcService->init();
}

void SubsysService::postInit() {
    mRfSubsysService->postInit();
}

int32_t SubsysService::registerAsServer() {
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    const int32_t error = AServiceManager_addService(asBinder().get(), name.c_str());
    if (error == 0) return 0;
    Log::e(TAG, "add service %s failed with error %d", name.c_str(), error);
    return -1;
}

void SubsysService::onHidlClientConnected() {
    mRfSubsysService->setSubsysState(true);
}

void SubsysService::onHidlClientDisconnected() {
    mRfSubsysService->setSubsysState(false);
}

void SubsysService::serviceDied() {
    forget(getClient());
}

void SubsysService::clearCallbacks() {
    Log::d(TAG, "SubsysService::clearCallbacks");
    mSubsysResponse->setCallback(nullptr);
    mSubsysIndication->setCallback(nullptr);
}

SubsysService::Client SubsysService::getClient() const {
    auto indication = mSubsysIndication->getCallback();
    return {std::move(indication), mSubsysResponse->getCallback()};
}

void SubsysService::forget(const Client& client) {
    if (!mSubsysResponse->clearCallback(client.response)) return;
    Log::d(TAG, "SubsysService::serviceDied: Client died. Cleaning up callbacks");
    Log::d(TAG, "SubsysService::clearCallbacks");
    mSubsysIndication->clearCallback(client.indication);
    mStateTracker->setHidlState(0);
    mRfSubsysService->setSubsysState(false);
    // A successor that came since then may have been told to the tracker before the 0. One whose indication callback is
    // still to be stored will be told after it.
    if (mSubsysIndication->getCallback()) mStateTracker->setHidlState(1);
}

ScopedAStatus SubsysService::setCallback(const std::shared_ptr<ISubsysResponse>& response,
                                         const std::shared_ptr<ISubsysIndication>& indication) {
    Log::d(TAG, "SubsysService::setCallbacks");
    const auto before = mSubsysResponse->getCallback();
    mSubsysResponse->setCallback(response);
    if (response) mDeathMonitor->init(response);
    mSubsysIndication->setCallback(indication);
    // Nobody hears of the death of the one before any more, and a client after a death is told the state.
    if (before && isDead(before)) mStateTracker->setHidlState(0);
    mStateTracker->setHidlState(1);
    mRfSubsysService->setSubsysState(true);
    // One that died meanwhile may have been forgotten before all of it was stored: its death is looked at once more.
    if (response && isDead(response)) mHandler->sendEmptyMessage(MSG_CLIENT_DEATH);
    // Another client came meanwhile, and the two may have begun their watches in the other order.
    const auto now = mSubsysResponse->getCallback();
    if (now && now != response) mDeathMonitor->init(now);
    return ScopedAStatus::ok();
}

ScopedAStatus SubsysService::setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>& response,
                                                const std::shared_ptr<IImsOrtcIndication>& indication) {
    // Neither the death monitor nor the state tracker hears of it, on purpose: these channels watch their own clients.
    Log::d(TAG, "SubsysService::setImsOrtcCallback");
    mImsOrtcResponse->setCallback(response);
    mImsOrtcIndication->setCallback(indication);
    return ScopedAStatus::ok();
}

ScopedAStatus SubsysService::killProcess(int32_t serial, int32_t pid, const std::string& name) {
    const bool killed = ::hal::OsUtils::killProcess(serial, pid, name);
    const SUBSYS_Errno error = killed ? SUBSYS_Errno::SUCCESS : SUBSYS_Errno::GENERIC_FAILURE;
    if (const auto response = SubsysServiceResponse::getInstance()) (void)response->killProcessResponse(serial, error);
    return ScopedAStatus::ok();
}

ScopedAStatus SubsysService::getSwtpStatus(int32_t serial) {
    return forward(mRfSubsysService, &RfSubsysService::getSwtpStatus, serial);
}

ScopedAStatus SubsysService::getLcdInfo(int32_t serial, int32_t type) {
    return forward(mRfSubsysService, &RfSubsysService::getLcdInfo, serial, type);
}

ScopedAStatus SubsysService::setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk) {
    return forward(mRfSubsysService, &RfSubsysService::setMipiFreqClk, serial, id, freqClk);
}

ScopedAStatus SubsysService::setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk) {
    return forward(mRfSubsysService, &RfSubsysService::setOscFreqClk, serial, id, freqClk);
}

ScopedAStatus SubsysService::getNvramData(int32_t serial, int32_t id, int32_t size) {
    return forward(mRfSubsysService, &RfSubsysService::getNvramData, serial, id, size);
}

ScopedAStatus SubsysService::setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna,
                                               int32_t state) {
    return forward(mRfSubsysService, &RfSubsysService::setIccTuningState, serial, technology, band, antenna, state);
}

ScopedAStatus SubsysService::setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state) {
    return forward(mRfSubsysService, &RfSubsysService::setIccWifiAntState, serial, antenna, state);
}

ScopedAStatus SubsysService::setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna,
                                                     int32_t state) {
    return forward(mRfSubsysService, &RfSubsysService::setIccSatelliteAntState, serial, technology, antenna, state);
}

ScopedAStatus SubsysService::getIccState(int32_t serial) {
    return forward(mRfSubsysService, &RfSubsysService::getIccState, serial);
}

ScopedAStatus SubsysService::sendIccCmd(int32_t serial, const IccReqInfo& info) {
    return forward(mRfSubsysService, &RfSubsysService::sendIccCmd, serial, info);
}

ScopedAStatus SubsysService::sendIccMetaCmd(const IccMetaReqInfo& info,
                                            const std::shared_ptr<ISubsysIccMetaCallback>& callback) {
    return forward(mRfSubsysService, &RfSubsysService::sendIccMetaCmd, info, callback);
}

ScopedAStatus SubsysService::setCallInfo(int32_t serial, const CallInfo& info) {
    return forward(mImsOrtcService, &ImsOrtcService::setCallInfo, serial, info);
}

ScopedAStatus SubsysService::setOrtcRoomInfo(int32_t serial, const OrtcRoomInfo& info) {
    return forward(mImsOrtcService, &ImsOrtcService::setOrtcRoomInfo, serial, info);
}

ScopedAStatus SubsysService::sendImsRtpData(int32_t serial, const ImsRtpDataInfo& info) {
    return forward(mImsOrtcService, &ImsOrtcService::sendImsRtpData, serial, info);
}

ScopedAStatus SubsysService::setImsRtpRemotePubIpAddr(int32_t serial, const ImsRtpPubIpAddrInfo& info) {
    return forward(mImsOrtcService, &ImsOrtcService::setImsRtpRemotePubIpAddr, serial, info);
}

ScopedAStatus SubsysService::sendImsRtpRedunSignalMsg(int32_t serial, const ImsRtpRedunSignalMsg& msg) {
    return forward(mImsOrtcService, &ImsOrtcService::sendImsRtpRedunSignalMsg, serial, msg);
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
