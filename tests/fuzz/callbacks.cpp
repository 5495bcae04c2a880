// Calls of any bytes to an object of each interface. One that is understood is made once more, through the proxy, and
// arrives as it was; an implementation that overrides nothing refuses it.

#include "tests/fuzz/support/Calls.h"
#include "tests/fuzz/support/Require.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsys.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysResponse.h>
#include <stubs/Sinks.h>

#include <array>
#include <tuple>
#include <utility>

namespace {

using namespace subsys_stubs::interface;
using fuzz::require;

template <class I, class Bp, class Default>
class Server : public subsys_stubs::Sink<I, Server<I, Bp, Default>> {
public:
    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        const std::tuple<Args...> received(arguments...);
        if (const void* sent = std::exchange(mSent, nullptr)) {
            require(*static_cast<const std::tuple<Args...>*>(sent) == received);
            return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "text");
        }
        require(((*mDefault).*method.call)(arguments...).getStatus() == STATUS_UNKNOWN_TRANSACTION);
        const std::shared_ptr<I> proxy = ndk::SharedRefBase::make<Bp>(this->asBinder());
        for (I* each : {static_cast<I*>(this), mDefault.get(), proxy.get()}) requireVersion(*each);
        mSent = &received;
        const auto status = ((*proxy).*method.call)(arguments...);
        require(mSent == nullptr);
        require(subsys_stubs::InterfaceTraits<I>::oneway ? status.isOk() : status.getServiceSpecificError() == 3);
        return ndk::ScopedAStatus::ok();
    }

private:
    static void requireVersion(I& object) {
        int32_t version = -1;
        std::string hash;
        require(object.getInterfaceVersion(&version).isOk() && object.getInterfaceHash(&hash).isOk());
        require(version == (hash.empty() ? 0 : I::version));
    }

    const std::shared_ptr<I> mDefault = ndk::SharedRefBase::make<Default>();
    const void* mSent = nullptr;  // by the proxy; the tuple of its arguments
};

template <class I, class Bp, class Default>
ndk::SpAIBinder server() {
    return ndk::SharedRefBase::make<Server<I, Bp, Default>>()->asBinder();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::array SERVERS{
        server<ISubsys, BpSubsys, ISubsysDefault>(),
        server<ISubsysResponse, BpSubsysResponse, ISubsysResponseDefault>(),
        server<ISubsysIndication, BpSubsysIndication, ISubsysIndicationDefault>(),
        server<ISubsysIccMetaCallback, BpSubsysIccMetaCallback, ISubsysIccMetaCallbackDefault>(),
        server<IImsOrtcResponse, BpImsOrtcResponse, IImsOrtcResponseDefault>(),
        server<IImsOrtcIndication, BpImsOrtcIndication, IImsOrtcIndicationDefault>()};
    FuzzedDataProvider input(data, size);
    while (input.remaining_bytes() != 0) {
        const auto& target = SERVERS[input.ConsumeIntegralInRange<size_t>(0, SERVERS.size() - 1)];
        (void)fuzz::call(target, SERVERS, input);
    }
    return 0;
}
