#pragma once

// Bases of the interface classes.
//
//   AIBinder --owns--> ICInterfaceData --shared--> BnX ..weak..> AIBinder     (a local object)
//   BpX --shared--> AIBinder (proxy)                                          (a remote one)

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <concepts>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace ndk {

// An object that hands out shared pointers to itself. Made by SharedRefBase::make only: std::make_shared and `new` do
// not compile elsewhere; an object with no owner, or with two, ends the process with a line on stderr.
class SharedRefBase {
public:
    SharedRefBase() = default;
    SharedRefBase(const SharedRefBase&) = delete;
    SharedRefBase& operator=(const SharedRefBase&) = delete;
    virtual ~SharedRefBase() {
        // Nobody owns it yet where a constructor, or making the shared pointer, throws.
        if (!mIsOwned && std::uncaught_exceptions() == 0) fail("an object that make() did not make");
        if (mThis.lock() != nullptr) fail("an object with two owners was destroyed by one of them");
    }

    // The shared pointer of this object. Not in a constructor or destructor. Thread: any.
    std::shared_ptr<SharedRefBase> ref() {
        std::shared_ptr<SharedRefBase> owner = mThis.lock();
        if (owner == nullptr) fail("an object without an owner");
        return owner;
    }
    template <typename Child>
    std::shared_ptr<Child> ref() {
        return std::static_pointer_cast<Child>(ref());
    }

    template <typename T, typename... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        std::shared_ptr<T> object(new T(std::forward<Args>(args)...));
        static_cast<SharedRefBase&>(*object).own(object);
        return object;
    }

    static void operator delete(void* memory) { ::operator delete(memory); }

private:
    static void* operator new(std::size_t size) { return ::operator new(size); }
    [[noreturn]] static void fail(const char* what) {
        std::fprintf(stderr, "SharedRefBase: %s\n", what);
        std::abort();
    }
    void own(const std::shared_ptr<SharedRefBase>& object) {
        mThis = object;
        mIsOwned = true;
    }

    std::weak_ptr<SharedRefBase> mThis;
    bool mIsOwned = false;
};

// An interface: what local implementation and proxy have in common.
class ICInterface : public SharedRefBase {
public:
    // The object to pass to another process. Thread: any.
    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    // Implementations write what helps to debug them. Thread: any.
    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) { return STATUS_OK; }

    // The class of an interface whose implementations derive from ICInterface. Defined once for each interface. The
    // names of its methods, by code from 1 on, are for tools and are not copied.
    static AIBinder_Class* defineClass(const char* descriptor, AIBinder_Class_onTransact onTransact) {
        return defineClass(descriptor, onTransact, nullptr, 0);
    }
    static AIBinder_Class* defineClass(const char* descriptor, AIBinder_Class_onTransact onTransact,
                                       const char** codeToFunction, size_t functionCount) {
        AIBinder_Class* clazz = AIBinder_Class_define(descriptor, onCreate, onDestroy, onTransact);
        if (clazz == nullptr) return nullptr;
        AIBinder_Class_setOnDump(clazz, onDump);
        AIBinder_Class_setTransactionCodeToFunctionNameMap(clazz, codeToFunction, functionCount);
        return clazz;
    }

    // The implementation of a local object whose class defineClass made, null for a remote one. Valid as long as
    // `binder`.
    static std::shared_ptr<ICInterface> asInterface(AIBinder* binder) {
        const auto* const data = static_cast<const Data*>(AIBinder_getUserData(binder));
        return data == nullptr ? nullptr : data->interface;
    }

private:
    struct Data {
        std::shared_ptr<ICInterface> interface;
    };

    static void* onCreate(void* implementation) {
        return new Data{static_cast<ICInterface*>(implementation)->ref<ICInterface>()};
    }
    static void onDestroy(void* userData) { delete static_cast<Data*>(userData); }
    static binder_status_t onDump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
        return asInterface(binder)->dump(fd, args, numArgs);
    }
};

// Base of a local implementation. Its AIBinder owns it; it knows the AIBinder weakly.
template <typename Interface>
class BnCInterface : public Interface {
public:
    // The same AIBinder as long as somebody holds it, a new one afterwards.
    SpAIBinder asBinder() final {
        std::lock_guard lock(mMutex);
        SpAIBinder binder = mWeakBinder.get() == nullptr ? SpAIBinder() : mWeakBinder.promote();
        if (binder.get() == nullptr) {
            binder = createBinder();
            mWeakBinder.set(AIBinder_Weak_new(binder.get()));
        }
        return binder;
    }
    bool isRemote() final { return false; }

    static std::string makeServiceName(std::string_view instance) {
        return std::string(Interface::descriptor) + "/" + std::string(instance);
    }

protected:
    // AIBinder_new with the class of the interface and `this`.
    virtual SpAIBinder createBinder() = 0;

private:
    std::mutex mMutex;
    ScopedAIBinder_Weak mWeakBinder;
};

// Base of a proxy, which shares the remote AIBinder.
template <typename Interface>
class BpCInterface : public Interface {
public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}

    SpAIBinder asBinder() final { return mBinder; }
    [[nodiscard]] const SpAIBinder& asBinderReference() const { return mBinder; }
    bool isRemote() final { return AIBinder_isRemote(mBinder.get()); }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(mBinder.get(), fd, args, numArgs);
    }

private:
    SpAIBinder mBinder;
};

}  // namespace ndk

namespace std {

// An object of SharedRefBase made this way would have two owners that do not know each other.
template <typename T, typename... Args>
requires std::derived_from<T, ndk::SharedRefBase> shared_ptr<T> make_shared(Args&&...)
= delete;

}  // namespace std
