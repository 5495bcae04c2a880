// A service that breaks one rule, which FAULT in the environment names.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stubs/Sinks.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys;

bool has(const char* fault) {
    const char* const given = getenv("FAULT");
    return given != nullptr && std::strcmp(given, fault) == 0;
}

class BrokenService final : public subsys_stubs::Sink<ISubsys, BrokenService> {
public:
    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        if (has("status")) return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
        if constexpr (requires { setClient(arguments...); }) setClient(arguments...);
        answer(method.name, arguments...);
        return ndk::ScopedAStatus::ok();
    }

private:
    void setClient(const std::shared_ptr<ISubsysResponse>& response,
                   const std::shared_ptr<ISubsysIndication>& indication) {
        if (mResponse == nullptr || !has("firstClient")) mResponse = has("clear") && !response ? mResponse : response;
        if (indication && !has("noState")) indication->sendSubsysStateChanged(true);
    }
    void setClient(const std::shared_ptr<IImsOrtcResponse>& response, const std::shared_ptr<IImsOrtcIndication>&) {
        const auto isDead = [](const auto& client) { return !AIBinder_isAlive(client->asBinder().get()); };
        if (!has("deadIms")) std::erase_if(mIms, isDead);
        if (mIms.size() < 2 || has("thirdIms")) mIms.push_back(response);
    }

    template <class... Rest>
    void answer(const std::string& method, int32_t serial, const Rest&...) {
        if (has("noAnswer") && method == "killProcess") return;
        const SubsysResponseInfo info{has("header") ? 1 : 0, serial,
                                      has("error") ? static_cast<SUBSYS_Errno>(12) : SUBSYS_Errno::NOT_SUPPORTED};
        for (int i = 0; i < (has("twice") ? 2 : 1); ++i) {
            if (mResponse != nullptr) send(*mResponse, method, info);
            for (const auto& client : mIms) send(*client, method, info);
        }
    }
    void answer(const std::string&, const IccMetaReqInfo& request,
                const std::shared_ptr<ISubsysIccMetaCallback>& callback) {
        if (callback) callback->onIccMetaResp({request.id, request.token, 0, false, {}});
        if (has("metaToRf") && mResponse) send(*mResponse, "sendIccCmd", {0, request.token});
    }
    template <class... Rest>
    void answer(const std::string&, const Rest&...) {}

    template <class Response>
    static void send(Response& client, const std::string& method, const SubsysResponseInfo& info) {
        subsys_stubs::forEachMethod<Response>([&]<class Method>(const Method& response) {
            if (response.name != method + "Response") return;
            typename Method::Arguments arguments{};
            std::get<0>(arguments) = info;
            std::apply([&](const auto&... each) { (client.*response.call)(each...); }, arguments);
        });
    }

    std::shared_ptr<ISubsysResponse> mResponse;
    std::vector<std::shared_ptr<IImsOrtcResponse>> mIms;
};

}  // namespace

int main() {
    const auto service = ndk::SharedRefBase::make<BrokenService>();
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    if (AServiceManager_addService(service->asBinder().get(), name.c_str()) != EX_NONE) return 1;
    std::cout << "serving" << std::endl;
    ABinderProcess_joinThreadPool();
}
