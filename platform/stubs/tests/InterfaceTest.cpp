#include "stubs/tests/RecordingSubsys.h"
#include "stubs/tests/Samples.h"
#include "stubs/tests/Words.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsys.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysResponse.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {
namespace {

using namespace stubs_test;

constexpr uint32_t GET_VERSION = 0x00FFFFFF;

// An object of an interface without the stubs: a function sees each transaction.
class RawObject {
public:
    using OnTransact = std::function<binder_status_t(uint32_t code, const AParcel* in, AParcel* out)>;

    RawObject(const char* descriptor, OnTransact onTransact) : mOnTransact(std::move(onTransact)) {
        const auto* clazz = AIBinder_Class_define(
            descriptor, [](void* object) { return object; }, [](void*) {},
            [](AIBinder* binder, transaction_code_t code, const AParcel* in, AParcel* out) {
                return static_cast<RawObject*>(AIBinder_getUserData(binder))->mOnTransact(code, in, out);
            });
        // Classes live as long as the process.
        static auto& sClasses = *new std::vector<const AIBinder_Class*>();
        sClasses.push_back(clazz);
        mBinder.set(AIBinder_new(clazz, this));
    }
    const ndk::SpAIBinder& binder() const { return mBinder; }

private:
    OnTransact mOnTransact;
    ndk::SpAIBinder mBinder;
};

binder_status_t succeed(AParcel* out) {
    return AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
}

// A transaction with these arguments, straight to the object.
binder_status_t transact(const ndk::SpAIBinder& binder, uint32_t code, const Words& arguments) {
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), in.getR()));
    for (const int32_t word : arguments) AParcel_writeInt32(in.get(), word);
    return AIBinder_transact(binder.get(), code, in.getR(), out.getR(), 0);
}

template <class Tuple>
Tuple sampleTuple() {
    Samples samples;
    return std::apply([&](auto... each) { return Tuple{samples.next<decltype(each)>()...}; }, Tuple());
}

// An object that keeps what it is sent.
class Wire {
public:
    explicit Wire(const char* descriptor)
        : mObject(descriptor, [this](uint32_t received, const AParcel* in, AParcel* out) {
              code = received;
              words = wordsOf(in);
              return succeed(out);
          }) {}
    const ndk::SpAIBinder& binder() const { return mObject.binder(); }

    uint32_t code = 0;
    Words words;

private:
    RawObject mObject;
};

// Everything that a proxy sends when each method is called with sample arguments, as one number. A callback is null.
template <class I, class Bp>
uint32_t wireOf() {
    Wire wire(I::descriptor);
    const std::shared_ptr<I> proxy = ndk::SharedRefBase::make<Bp>(wire.binder());
    uint32_t sum = 2166136261;  // FNV-1a, a word at a time
    const auto add = [&](int32_t word) { sum = (sum ^ static_cast<uint32_t>(word)) * 16777619; };
    subsys_stubs::forEachMethod<I>([&]<class Method>(const Method& method) {
        const auto arguments = sampleTuple<typename Method::Arguments>();
        EXPECT_TRUE(
            std::apply([&](const auto&... each) { return ((*proxy).*method.call)(each...); }, arguments).isOk());
        EXPECT_EQ(method.code, wire.code) << method.name;
        add(static_cast<int32_t>(wire.code));
        for (const int32_t word : wire.words) add(word);
    });
    return sum;
}

// The interface is frozen: peers of this version are out there. A change here speaks another language to them.
TEST(Proxy, Wire_WhenEachMethodIsCalled_ThenCodesAndBytesAreThoseOfVersion5) {
    EXPECT_EQ(4010781182u, (wireOf<ISubsys, BpSubsys>()));
    EXPECT_EQ(986651626u, (wireOf<ISubsysResponse, BpSubsysResponse>()));
    EXPECT_EQ(4171213001u, (wireOf<ISubsysIndication, BpSubsysIndication>()));
    EXPECT_EQ(1840659581u, (wireOf<ISubsysIccMetaCallback, BpSubsysIccMetaCallback>()));
    EXPECT_EQ(1573209770u, (wireOf<IImsOrtcResponse, BpImsOrtcResponse>()));
    EXPECT_EQ(2004110804u, (wireOf<IImsOrtcIndication, BpImsOrtcIndication>()));
}

class ServedSubsys : public testing::Test {
protected:
    const std::shared_ptr<RecordingSubsys> mService = ndk::SharedRefBase::make<RecordingSubsys>();
    const ndk::SpAIBinder mBinder = mService->asBinder();
    const std::shared_ptr<ISubsys> mProxy = ndk::SharedRefBase::make<BpSubsys>(mBinder);
};

TEST_F(ServedSubsys, Call_WhenThroughProxyAndServer_ThenTheSameCallArrives) {
    subsys_stubs::forEachMethod<ISubsys>([&]<class Method>(const Method& method) {
        const auto arguments = sampleTuple<typename Method::Arguments>();
        for (ISubsys* target : {mProxy.get(), static_cast<ISubsys*>(mService.get())}) {
            const auto made = [&](const auto&... each) { return (target->*method.call)(each...); };
            EXPECT_TRUE(std::apply(made, arguments).isOk()) << method.name;
        }
    });
    ASSERT_EQ(38u, mService->calls.size());
    for (size_t i = 0; i < mService->calls.size(); i += 2) EXPECT_EQ(mService->calls[i + 1], mService->calls[i]);
    EXPECT_EQ("killProcess(1, 2, text 3)", mService->calls[30]);
}

TEST_F(ServedSubsys, Call_WhenTheServiceFails_ThenTheProxySeesItsStatus) {
    mService->answer = [] { return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "msg"); };
    const auto specific = mProxy->getSwtpStatus(1);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, specific.getExceptionCode());
    EXPECT_EQ(3, specific.getServiceSpecificError());
    EXPECT_STREQ("msg", specific.getMessage());

    mService->answer = [] { return ndk::ScopedAStatus::fromStatus(STATUS_NO_INIT); };
    EXPECT_EQ(STATUS_NO_INIT, mProxy->getSwtpStatus(1).getStatus());
}

TEST_F(ServedSubsys, Transact_WhenAnArgumentIsCutOrNull_ThenItsStatusAndTheMethodIsNotCalled) {
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, transact(mBinder, ISubsys::TRANSACTION_getSwtpStatus, {}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, transact(mBinder, ISubsys::TRANSACTION_getLcdInfo, {7}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, transact(mBinder, ISubsys::TRANSACTION_setCallInfo, {7, 1, 8}));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, transact(mBinder, ISubsys::TRANSACTION_setCallInfo, {7, 0}));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, transact(mBinder, ISubsys::TRANSACTION_killProcess, {1, 2, -1}));
    EXPECT_EQ(STATUS_BAD_TYPE, transact(mBinder, ISubsys::TRANSACTION_setCallback, {}));
    EXPECT_TRUE(mService->calls.empty());
}

TEST_F(ServedSubsys, Transact_WhenTheCodeIsOfNoMethod_ThenUnknownTransaction) {
    for (const uint32_t code : {20u, 21u, 0x00FFFFFDu}) {
        EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, transact(mBinder, code, {1, 2, 3})) << code;
    }
}

TEST_F(ServedSubsys, Callbacks_WhenNullOrOfAnotherInterface_ThenTheServiceGetsNull) {
    EXPECT_TRUE(mProxy->setCallback(nullptr, nullptr).isOk());
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    AIBinder_prepareTransaction(mBinder.get(), in.getR());
    AParcel_writeStrongBinder(in.get(), mBinder.get());  // an ISubsys is no ISubsysResponse
    AParcel_writeStrongBinder(in.get(), nullptr);
    EXPECT_EQ(STATUS_OK, AIBinder_transact(mBinder.get(), ISubsys::TRANSACTION_setCallback, in.getR(), out.getR(), 0));
    EXPECT_EQ((std::vector<std::string>(2, "setCallback(null, null)")), mService->calls);
}

TEST_F(ServedSubsys, FromBinder_WhenLocalNullOrForeign_ThenItselfOrNull) {
    EXPECT_EQ(mService, ISubsys::fromBinder(mBinder));
    EXPECT_EQ(nullptr, ISubsys::fromBinder(ndk::SpAIBinder()));
    EXPECT_EQ(nullptr, ISubsysResponse::fromBinder(mBinder));
}

TEST_F(ServedSubsys, VersionAndHash_WhenAskedThere_ThenThoseOfTheInterface) {
    for (const auto& service : {std::static_pointer_cast<ISubsys>(mService), mProxy}) {
        int32_t version = 0;
        std::string hash;
        EXPECT_TRUE(service->getInterfaceVersion(&version).isOk());
        EXPECT_TRUE(service->getInterfaceHash(&hash).isOk());
        EXPECT_EQ(5, version);
        EXPECT_EQ("eb915a9f55f7590d55c29b64a7be1f4f97a18f37", hash);
    }
}

TEST(Proxy, Version_WhenAskedAgain_ThenOneTransactionAndFailuresAreNotKept) {
    int asked = 0;
    RawObject raw(ISubsys::descriptor, [&](uint32_t code, const AParcel*, AParcel* out) {
        if (++asked == 1 || asked == 3) return static_cast<binder_status_t>(STATUS_FAILED_TRANSACTION);
        succeed(out);
        return code == GET_VERSION ? AParcel_writeInt32(out, 4) : AParcel_writeString(out, "old", 3);
    });
    const auto proxy = ndk::SharedRefBase::make<BpSubsys>(raw.binder());
    int32_t version = 0;
    std::string hash;
    EXPECT_FALSE(proxy->getInterfaceVersion(&version).isOk());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(proxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(4, version);
    EXPECT_FALSE(proxy->getInterfaceHash(&hash).isOk());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(proxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ("old", hash);
    EXPECT_EQ(4, asked);
}

TEST(Proxy, Reply_WhenShort_ThenItsStatus) {
    RawObject raw(ISubsys::descriptor, [](uint32_t, const AParcel*, AParcel*) { return STATUS_OK; });
    const auto proxy = ndk::SharedRefBase::make<BpSubsys>(raw.binder());
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, proxy->getSwtpStatus(1).getStatus());
    int32_t version = 0;
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, proxy->getInterfaceVersion(&version).getStatus());
}

class Fallback final : public ISubsysDefault {
public:
    ndk::ScopedAStatus getLcdInfo(int32_t serial, int32_t type) override {
        called = {serial, type};
        return ndk::ScopedAStatus::ok();
    }
    std::pair<int32_t, int32_t> called;
};

TEST(DefaultImpl, Call_WhenTheServerDoesNotKnowTheMethod_ThenTheDefaultIsCalled) {
    binder_status_t answer = STATUS_UNKNOWN_TRANSACTION;
    RawObject raw(ISubsys::descriptor, [&](uint32_t, const AParcel*, AParcel*) { return answer; });
    const auto proxy = ndk::SharedRefBase::make<BpSubsys>(raw.binder());
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, proxy->getLcdInfo(1, 2).getStatus());

    const auto fallback = ndk::SharedRefBase::make<Fallback>();
    EXPECT_FALSE(ISubsys::setDefaultImpl(nullptr));
    EXPECT_TRUE(ISubsys::setDefaultImpl(fallback));
    EXPECT_FALSE(ISubsys::setDefaultImpl(ndk::SharedRefBase::make<Fallback>()));
    EXPECT_EQ(fallback, ISubsys::getDefaultImpl());
    EXPECT_TRUE(proxy->getLcdInfo(1, 2).isOk());
    EXPECT_EQ(std::pair(1, 2), fallback->called);
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, proxy->getSwtpStatus(1).getStatus());  // not overridden

    answer = STATUS_FAILED_TRANSACTION;
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, proxy->getLcdInfo(1, 2).getStatus());
    EXPECT_EQ(nullptr, fallback->asBinder().get());
}

}  // namespace
}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
