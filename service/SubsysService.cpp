#include "service/SubsysService.h"

#include "component/RequestTrace.h"
#include "ims/ImsOrtcService.h"
#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "rf/RfSubsysService.h"
#include "service/OsUtils.h"
#include "service/ServiceState.h"
#include "service/SubsysServiceStateTracker.h"
#include "service/channel/SubsysServiceIndication.h"
#include "service/channel/SubsysServiceResponse.h"

#include <android/binder_manager.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <mindroid/SystemClock.h>

#include <cstdio>

using ::mindroid::Log;
using ::mindroid::Message;
using ::mindroid::sp;
using ::ndk::ScopedAStatus;

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

namespace {

constexpr int32_t MSG_CLIENT_DEATH = 0;

bool isDead(const std::shared_ptr<::ndk::ICInterface>& callback) {
    return callback != nullptr && !isAlive(callback);
}

int32_t requestId(int32_t serial) {
    return serial;
}
int32_t requestId(const IccMetaReqInfo& info) {
    return info.token;
}

// The handler's own status is dropped for a fresh success. The first argument tells the request from others.
template <typename Handler, typename Method, typename Id, typename... Args>
ScopedAStatus forward(const char* operation, const sp<Handler>& handler, Method method, const Id& id,
                      const Args&... args) {
    const ::hal::RequestScope scope(operation, requestId(id));
    (void)((*handler).*method)(id, args...);
    return ScopedAStatus::ok();
}

}  // namespace

SubsysService::SubsysServiceHandler::SubsysServiceHandler(SubsysService& service) : mService(&service) {}

void SubsysService::SubsysServiceHandler::handleMessage(const sp<Message>& message) {
    if (message->what == MSG_CLIENT_DEATH) onClientDeath(message);
}

void SubsysService::SubsysServiceHandler::onClientDeath(const sp<Message>& /*message*/) {
    if (mService != nullptr) mService->onClientDeath();
}

SubsysService::SubsysService() : mStartTime(::mindroid::SystemClock::uptimeMillis()) {
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
    mHandler->detach();
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

binder_status_t SubsysService::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
    return dprintf(fd, "%s", ::hal::describeState(mStartTime).c_str()) < 0 ? STATUS_UNKNOWN_ERROR : STATUS_OK;
}

void SubsysService::onHidlClientConnected() {
    mRfSubsysService->setSubsysState(true);
}

void SubsysService::onHidlClientDisconnected() {
    mRfSubsysService->setSubsysState(false);
}

void SubsysService::serviceDied() {
    cleanUp(mSubsysResponse->getCallback(), mSubsysIndication->getCallback());
}

void SubsysService::onClientDeath() {
    // The indication first: setCallback stores it last, so it is no newer than the response.
    const auto indication = mSubsysIndication->getCallback();
    const auto response = mSubsysResponse->getCallback();
    // A living client is the successor of the one that died, and stays.
    isAlive(response) ? cleanUp(nullptr, nullptr) : cleanUp(response, indication);
}

void SubsysService::cleanUp(const std::shared_ptr<ISubsysResponse>& response,
                            const std::shared_ptr<ISubsysIndication>& indication) {
    Log::d(TAG, "SubsysService::serviceDied: Client died. Cleaning up callbacks");
    atrace_instant(::hal::TRACE_TAG, "RF client died");
    clearCallbacks(response, indication);
    mStateTracker->setHidlState(0);
    mRfSubsysService->setSubsysState(false);
}

void SubsysService::clearCallbacks() {
    clearCallbacks(mSubsysResponse->getCallback(), mSubsysIndication->getCallback());
}

void SubsysService::clearCallbacks(const std::shared_ptr<ISubsysResponse>& response,
                                   const std::shared_ptr<ISubsysIndication>& indication) {
    Log::d(TAG, "SubsysService::clearCallbacks");
    mSubsysResponse->clearCallback(response);
    mSubsysIndication->clearCallback(indication);
}

ScopedAStatus SubsysService::setCallback(const std::shared_ptr<ISubsysResponse>& response,
                                         const std::shared_ptr<ISubsysIndication>& indication) {
    Log::d(TAG, "SubsysService::setCallbacks");
    atrace_instant(::hal::TRACE_TAG, "RF client set");
    const bool followsDead = isDead(mSubsysResponse->getCallback()) || isDead(mSubsysIndication->getCallback());
    mSubsysResponse->setCallback(response);
    if (response) mDeathMonitor->init(response);
    mSubsysIndication->setCallback(indication);
    // The death of the client before may not have been heard. Its successor is told the state all the same.
    if (followsDead) mStateTracker->setHidlState(0);
    mStateTracker->setHidlState(1);
    mRfSubsysService->setSubsysState(true);
    return ScopedAStatus::ok();
}

ScopedAStatus SubsysService::setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>& response,
                                                const std::shared_ptr<IImsOrtcIndication>& indication) {
    // Deliberate: neither the death monitor nor the state tracker hears of it. These channels watch their own clients.
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
    return forward("getSwtpStatus", mRfSubsysService, &RfSubsysService::getSwtpStatus, serial);
}

ScopedAStatus SubsysService::getLcdInfo(int32_t serial, int32_t type) {
    return forward("getLcdInfo", mRfSubsysService, &RfSubsysService::getLcdInfo, serial, type);
}

ScopedAStatus SubsysService::setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk) {
    return forward("setMipiFreqClk", mRfSubsysService, &RfSubsysService::setMipiFreqClk, serial, id, freqClk);
}

ScopedAStatus SubsysService::setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk) {
    return forward("setOscFreqClk", mRfSubsysService, &RfSubsysService::setOscFreqClk, serial, id, freqClk);
}

ScopedAStatus SubsysService::getNvramData(int32_t serial, int32_t id, int32_t size) {
    return forward("getNvramData", mRfSubsysService, &RfSubsysService::getNvramData, serial, id, size);
}

ScopedAStatus SubsysService::setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna,
                                               int32_t state) {
    return forward("setIccTuningState", mRfSubsysService, &RfSubsysService::setIccTuningState, serial, technology, band,
                   antenna, state);
}

ScopedAStatus SubsysService::setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state) {
    return forward("setIccWifiAntState", mRfSubsysService, &RfSubsysService::setIccWifiAntState, serial, antenna,
                   state);
}

ScopedAStatus SubsysService::setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna,
                                                     int32_t state) {
    return forward("setIccSatelliteAntState", mRfSubsysService, &RfSubsysService::setIccSatelliteAntState, serial,
                   technology, antenna, state);
}

ScopedAStatus SubsysService::getIccState(int32_t serial) {
    return forward("getIccState", mRfSubsysService, &RfSubsysService::getIccState, serial);
}

ScopedAStatus SubsysService::sendIccCmd(int32_t serial, const IccReqInfo& info) {
    return forward("sendIccCmd", mRfSubsysService, &RfSubsysService::sendIccCmd, serial, info);
}

ScopedAStatus SubsysService::sendIccMetaCmd(const IccMetaReqInfo& info,
                                            const std::shared_ptr<ISubsysIccMetaCallback>& callback) {
    return forward("sendIccMetaCmd", mRfSubsysService, &RfSubsysService::sendIccMetaCmd, info, callback);
}

ScopedAStatus SubsysService::setCallInfo(int32_t serial, const CallInfo& info) {
    return forward("setCallInfo", mImsOrtcService, &ImsOrtcService::setCallInfo, serial, info);
}

ScopedAStatus SubsysService::setOrtcRoomInfo(int32_t serial, const OrtcRoomInfo& info) {
    return forward("setOrtcRoomInfo", mImsOrtcService, &ImsOrtcService::setOrtcRoomInfo, serial, info);
}

ScopedAStatus SubsysService::sendImsRtpData(int32_t serial, const ImsRtpDataInfo& info) {
    return forward("sendImsRtpData", mImsOrtcService, &ImsOrtcService::sendImsRtpData, serial, info);
}

ScopedAStatus SubsysService::setImsRtpRemotePubIpAddr(int32_t serial, const ImsRtpPubIpAddrInfo& info) {
    return forward("setImsRtpRemotePubIpAddr", mImsOrtcService, &ImsOrtcService::setImsRtpRemotePubIpAddr, serial,
                   info);
}

ScopedAStatus SubsysService::sendImsRtpRedunSignalMsg(int32_t serial, const ImsRtpRedunSignalMsg& msg) {
    return forward("sendImsRtpRedunSignalMsg", mImsOrtcService, &ImsOrtcService::sendImsRtpRedunSignalMsg, serial, msg);
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
