#pragma once

#include "component/ExecutorProxy.h"
#include "component/SubsysComponent.h"
#include "rf/IccCommands.h"
#include "rf/IccEvents.h"
#include "rf/IccPlugin.h"
#include "rf/IccPluginApi.h"

#include <mindroid/Boxes.h>
#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <cstdint>
#include <vector>

// The IccEventCallback of this library; `context` is the IccProxy that registered it.
extern "C" void iccStateEventCallback(IccEventType type, void* context, void* data, int size);

namespace hal {

// The one object that talks to the ICC plugin. It loads the plugin when it is first needed, enters it on its own thread
// only, one call at a time in the order of the requests, and passes the plugin's events on to listeners. One for a
// process: whether the plugin is loaded is remembered for the process, not for the proxy.
//
//   any thread --post--> proxy thread --call--> plugin
//   listeners' loopers <--notify-- proxy thread <--message-- iccStateEventCallback <-- plugin's threads
//
// It posts the work and leaves it to three others: IccPlugin (typed calls), IccEvents (listeners), IccCommands. From
// the first registration with the plugin on it lives as long as the process: the plugin has its address.
class IccProxy : public mindroid::Handler {
public:
    static constexpr const char* TAG = "IccProxy";

    // Runs on the thread, which must have been started. Where there is none, on the looper of the calling thread.
    IccProxy(int32_t instance, const mindroid::sp<mindroid::HandlerThread>& thread);
    ~IccProxy() override;

    // Everything up to sendIccCmd returns at once; the proxy's thread does the work. Thread: any.

    // `speed` in Hz.
    void iccApisInit(uint8_t version, uint32_t speed, uint8_t brindle);

    // Each puts the callback in the place of what the handler registered for this event before, and asks the plugin for
    // the event again. The callback's message carries a SubsysInterfaceData of the record named. A listener is not told
    // what happened before, and an event that comes while it changes places is missed. While the plugin can't be loaded
    // a listener is kept but the plugin does not know of it.
    Registration registerIccStateInd;        // IccStateInfoType
    Registration registerIccClatInfoInd;     // IccAclStatusRspMsgType
    Registration registerIccDeviceErrInd;    // IccDeviceErrType
    Registration registerIccPercChangeInd;   // IccPercStateType
    Registration registerIccInfoChangedInd;  // IccIndInfoType

    // Settings: nobody is told the outcome.
    void setTxSharingState(uint8_t enable, std::vector<uint16_t> band, std::vector<uint16_t> param1,
                           std::vector<uint8_t> param2);
    void setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant);
    void setScreenState(bool on);
    void sendIccEventInd(uint32_t event, const mindroid::sp<mindroid::ByteArray>& data);

    // Requests: the outcome goes to the reply message, see SubsysComponent::sendResponse. GENERIC_FAILURE when the
    // plugin is needed and can't be loaded.

    // Always NOT_SUPPORTED, although the plugin gets the request.
    void setIccWifiAntState(int32_t antenna, int32_t state, const mindroid::sp<mindroid::Message>& reply);
    void setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state,
                                 const mindroid::sp<mindroid::Message>& reply);
    // Answers a SubsysInterfaceData<IccStateInfoType>, all zero.
    void getIccState(const mindroid::sp<mindroid::Message>& reply);
    // Commands up to 254 go to the plugin as they are and answer a ByteArray of 256 bytes; the timeout, in
    // milliseconds, is 4000 at most. Those above are the service's own: 1000 ACL state, 1001 reload the configuration,
    // 1002 satellite antenna, 1003 coexistence antenna, 1004 hardware id (answers a ByteArray of one byte, which is
    // 255 without a plugin), 1005 start the UART log; both succeed without a plugin, too.
    void sendIccCmd(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs,
                    const mindroid::sp<mindroid::Message>& reply);

    // The outcome of a command as the commands above 254 report it. Thread: any.
    [[nodiscard]] static SUBSYS_Errno getIccStateError(spi_cmd_err_code_e code) {
        return IccCommands::getIccStateError(code);
    }

    // Takes an event over from the plugin. Thread: any.
    void processIccStateEvent(IccEventType type, const void* data, int size);
    // Tells the listeners of an event. Thread: proxy.
    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;

    // Whether the plugin is there to be called. Tries again each time until it is. Thread: proxy.
    bool loadIccApisPlugin() { return mPlugin.loadIccApisPlugin(); }

private:
    template <typename Task>
    void post(Task task);
    template <typename... Params, typename... Args>
    void postCommand(void (IccCommands::*command)(Params...), Args... args);

    void registerInd(IccEventType type, const mindroid::sp<mindroid::Handler>& handler,
                     const mindroid::sp<mindroid::MessageCallback>& callback,
                     const mindroid::sp<mindroid::Object>& obj);
    void registerWithPlugin(IccEventType type);

    const mindroid::sp<mindroid::HandlerThread> mThread;
    // Null where the proxy has no thread of its own.
    const mindroid::sp<mindroid::Executor> mExecutor;
    // Both: proxy.
    IccPlugin mPlugin;
    IccCommands mCommands;
    IccEvents mEvents;
    // This proxy, once the plugin has its address.
    mindroid::sp<IccProxy> mKeptForPlugin;
};

}  // namespace hal
