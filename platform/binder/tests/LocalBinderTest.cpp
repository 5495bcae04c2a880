#include "binder/tests/Echo.h"

#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>

#include <gtest/gtest.h>

namespace {

using namespace test;

class ICounter : public ndk::ICInterface {
public:
    static const char* const descriptor;
    virtual int32_t next() = 0;
};
const char* const ICounter::descriptor = "test.ICounter";

class BnCounter : public ndk::BnCInterface<ICounter> {
public:
    static inline const char* sNames[] = {"next"};
    static AIBinder_Class* clazz() {
        static AIBinder_Class* const defined = ICInterface::defineClass(
            descriptor,
            [](AIBinder* binder, transaction_code_t, const AParcel*, AParcel* out) {
                return AParcel_writeInt32(out, std::static_pointer_cast<ICounter>(asInterface(binder))->next());
            },
            sNames, 1);
        return defined;
    }

protected:
    ndk::SpAIBinder createBinder() override { return ndk::SpAIBinder(AIBinder_new(clazz(), this)); }
};

class Counter final : public BnCounter {
public:
    explicit Counter(bool* destroyed) : mDestroyed(destroyed) {}
    ~Counter() override { *mDestroyed = true; }
    int32_t next() override { return ++mCount; }
    binder_status_t dump(int, const char**, uint32_t count) override {
        return count == 0 ? STATUS_OK : STATUS_BAD_VALUE;
    }

private:
    bool* mDestroyed;
    int32_t mCount = 0;
};

template <typename T>
concept CanMakeShared = requires(bool* flag) {
    std::make_shared<T>(flag);
};
static_assert(!CanMakeShared<Counter>, "an object with two owners that do not know each other");
static_assert(!std::is_convertible_v<AIBinder*, ndk::SpAIBinder>, "taking a reference over is said plainly");

TEST(LocalBinderTest, AsBinder_WhenHeldAndDropped_ThenTheBinderOwnsTheImplementation) {
    bool destroyed = false;
    ndk::SpAIBinder binder;
    {
        const auto counter = ndk::SharedRefBase::make<Counter>(&destroyed);
        EXPECT_FALSE(counter->isRemote());
        binder = counter->asBinder();
        EXPECT_EQ(binder, counter->asBinder());
    }
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(1, std::static_pointer_cast<ICounter>(ndk::ICInterface::asInterface(binder.get()))->next());
    EXPECT_EQ(2, callForInt(binder, 1));
    EXPECT_EQ(STATUS_OK, AIBinder_dump(binder.get(), 1, nullptr, 0));
    EXPECT_EQ(STATUS_BAD_VALUE, AIBinder_dump(binder.get(), 1, nullptr, 1));
    binder = nullptr;
    EXPECT_TRUE(destroyed);
}

TEST(SharedRefBaseDeathTest, Destructor_WhenAnObjectHasNoOwnerOrTwo_ThenTheProcessEndsWithALine) {
    bool destroyed = false;
    EXPECT_DEATH({ Counter counter(&destroyed); }, "an object that make\\(\\) did not make");
    EXPECT_DEATH(
        {
            const auto owner = ndk::SharedRefBase::make<Counter>(&destroyed);
            std::shared_ptr<Counter> second(owner.get());
        },
        "an object with two owners");
}

TEST(LocalBinderTest, Class_WhenAsked_ThenItsNamesAndNoOtherFitsTheObject) {
    const ndk::SpAIBinder object = newEcho(new Echo);
    EXPECT_TRUE(AIBinder_associateClass(object.get(), echoClass()));
    EXPECT_FALSE(AIBinder_associateClass(object.get(), otherClass()));
    EXPECT_EQ(echoClass(), AIBinder_getClass(object.get()));
    EXPECT_STREQ(ECHO_DESCRIPTOR, AIBinder_Class_getDescriptor(echoClass()));
    EXPECT_FALSE(AIBinder_isRemote(object.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(object.get()));
    EXPECT_EQ(nullptr, AIBinder_Class_define(nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("next", AIBinder_Class_getFunctionName(BnCounter::clazz(), 1));
    for (const transaction_code_t code : {0u, 2u}) {
        EXPECT_EQ(nullptr, AIBinder_Class_getFunctionName(BnCounter::clazz(), code));
    }
}

TEST(LocalBinderTest, Transact_WhenTheObjectIsLocal_ThenItRunsInPlace) {
    auto* echo = new Echo;
    const ndk::SpAIBinder object = newEcho(echo);
    const auto here = std::this_thread::get_id();
    bool ran = false;
    echo->onNote([&](int32_t value) {
        ran = value == 5 && std::this_thread::get_id() == here && AIBinder_getCallingPid() == getpid();
    });
    EXPECT_EQ(STATUS_OK, call(object, NOTE, int32(5), {}, FLAG_ONEWAY));
    EXPECT_TRUE(ran);
    const auto isEmpty = [](const AParcel* out) { EXPECT_EQ(0, AParcel_getDataSize(out)); };
    EXPECT_EQ(STATUS_OK, call(object, LAST, {}, isEmpty, FLAG_ONEWAY));
    EXPECT_EQ(STATUS_OK, test::echo(object, 2000));
    EXPECT_EQ(STATUS_BAD_INDEX, call(object, STATUS, int32(STATUS_BAD_INDEX)));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, call(object, UNKNOWN));
    EXPECT_EQ(STATUS_BAD_TYPE, call(object, UNKNOWN, [](AParcel* in) { AParcel_reset(in); }));
    EXPECT_EQ(STATUS_BAD_VALUE, call(object, ECHO, {}, {}, 0x10)) << "an unknown flag";
    EXPECT_EQ(STATUS_OK, call(object, LAST, {}, {}, FLAG_CLEAR_BUF));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AIBinder_ping(nullptr));
}

TEST(LocalBinderTest, Promote_WhenTheLastReferenceIsGone_ThenNull) {
    ndk::SpAIBinder object = newEcho(new Echo);
    const ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(object.get()));
    const ndk::ScopedAIBinder_Weak clone(weak);  // NOLINT(performance-unnecessary-copy-initialization): what is tested
    EXPECT_EQ(object, weak.promote());
    EXPECT_EQ(object, clone.promote());
    const ndk::SpAIBinder other = newEcho(new Echo);
    EXPECT_NE(object < other, other < object);
    object = nullptr;
    EXPECT_EQ(nullptr, clone.promote().get());
    EXPECT_FALSE(weak < clone || clone < weak) << "the same object, dead as it is";
    EXPECT_EQ(nullptr, AIBinder_Weak_clone(nullptr));
}

TEST(LocalBinderTest, SetThreadPoolMaxThreadCount_WhenStarted_ThenRefused) {
    EXPECT_TRUE(ABinderProcess_setThreadPoolMaxThreadCount(1));
    ABinderProcess_startThreadPool();
    EXPECT_FALSE(ABinderProcess_setThreadPoolMaxThreadCount(2));
}

}  // namespace
