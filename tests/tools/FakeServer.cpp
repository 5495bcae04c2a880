#include "stubs/tests/RecordingSubsys.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <unistd.h>

#include <iostream>

// A service whose answers the client chooses: the numbers in a request say how it is answered.
namespace {

using namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys;

class FakeServer final : public stubs_test::RecordingSubsys {
public:
    enum LcdType { ANSWER, REFUSE, STAY_SILENT, DIE, ANSWER_OTHERS_FIRST, INDICATE_FIRST, FAIL_THE_CALL };

    ndk::ScopedAStatus setCallback(const std::shared_ptr<ISubsysResponse>& response,
                                   const std::shared_ptr<ISubsysIndication>& indication) override {
        mResponse = response;
        mIndication = indication;
        return mIndication->sendSubsysStateChanged(true);
    }

    ndk::ScopedAStatus getSwtpStatus(int32_t serial) override {
        return mResponse->getSwtpStatusResponse({0, serial}, -1);
    }

    ndk::ScopedAStatus getLcdInfo(int32_t serial, int32_t type) override {
        switch (type) {
            case REFUSE:
                return answerLcd({0, serial, SUBSYS_Errno::NOT_SUPPORTED}, "");
            case STAY_SILENT:
                return ndk::ScopedAStatus::ok();
            case DIE:
                _exit(1);
            case ANSWER_OTHERS_FIRST:
                mResponse->killProcessResponse({0, serial});
                answerLcd({0, serial + 100}, "of another");
                break;
            case INDICATE_FIRST:
                mIndication->sendiccStateChanged({1, 0, 1, {7}, {0xAB}});
                mIndication->notifyIccPercStateChangedInd({{{1, 2, 3}, {-1, 0, 0}}});
                break;
            case FAIL_THE_CALL:
                return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "no");
            default:
                break;
        }
        return answerLcd({0, serial}, "panel \"1\"");
    }

    ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo& info,
                                      const std::shared_ptr<ISubsysIccMetaCallback>& callback) override {
        callback->onIccMetaResp({info.id, info.token + 1, 0, true, {}});  // of another command
        if (info.id < 0) return ndk::ScopedAStatus::ok();
        return callback->onIccMetaResp({info.id, info.token, 2, info.reqId != 0, info.data});
    }

private:
    ndk::ScopedAStatus answerLcd(const SubsysResponseInfo& info, const std::string& text) {
        return mResponse->getLcdInfoResponse(info, text);
    }

    std::shared_ptr<ISubsysResponse> mResponse;
    std::shared_ptr<ISubsysIndication> mIndication;
};

}  // namespace

int main() {
    const auto server = ndk::SharedRefBase::make<FakeServer>();
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    if (AServiceManager_addService(server->asBinder().get(), name.c_str()) != EX_NONE) return 1;
    ABinderProcess_setThreadPoolMaxThreadCount(0);
    std::cout << "serving " << getpid() << std::endl;
    ABinderProcess_joinThreadPool();
}
