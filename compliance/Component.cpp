#include "compliance/Component.h"

#include "compliance/ComponentRun.h"
#include "compliance/Library.h"
#include "component/ComponentManager.h"
#include "ims/ImsOrtcComponent.h"
#include "rf/VsComponent.h"

#include <mindroid/Boxes.h>

#include <dlfcn.h>

#include <algorithm>

using hal::ImsOrtcComponent;
using hal::VsComponent;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::sp;

namespace compliance {

namespace {

// ---- The IMS ORTC media path

template <typename Record>
Verdict holdsRecord(const Object& carrier) {
    return readable(recordOf<Record>(carrier), sizeof(Record));
}

class ImsRun {
public:
    ImsRun(ComponentRun& run, const sp<ImsOrtcComponent>& component) : mRun(run), mComponent(component) {}

    void check();

private:
    template <typename Record>
    void add(const char* name, void (ImsOrtcComponent::*operation)(const Record&, const sp<Message>&),
             const Record& record, const std::function<Verdict(const Object&)>& checkValue = nullptr) {
        mRequests.push_back({"ImsOrtcComponent::" + std::string(name), overrides(*mComponent, *mBase, operation),
                             [component = mComponent, operation, record](const sp<Message>& reply) {
                                 ((*component).*operation)(record, reply);
                             },
                             checkValue});
    }
    using Registration = void (ImsOrtcComponent::*)(const sp<mindroid::Handler>&, const sp<MessageCallback>&,
                                                    const sp<Object>&);
    template <typename Record>
    void listen(const char* name, Registration registration) {
        mRun.listen(
            name, overrides(*mComponent, *mBase, registration),
            [&](const auto& callback) { ((*mComponent).*registration)(mRun.handler(), callback, nullptr); },
            holdsRecord<Record>);
    }
    void listenToAll();
    void addRequests();

    ComponentRun& mRun;
    const sp<ImsOrtcComponent> mComponent;
    const sp<ImsOrtcComponent> mBase = new ImsOrtcComponent();
    std::vector<ComponentRequest> mRequests;
};

void ImsRun::listenToAll() {
    listen<hal::ImsRtpPubIpAddrInfoType>("LocalPubIpAddrChanged", &ImsOrtcComponent::registerLocalPubIpAddrChangedInd);
    listen<hal::ImsRtpDataInfoType>("RecvImsRtpData", &ImsOrtcComponent::registerRecvImsRtpDataInd);
    listen<hal::OrtcStatusType>("NotifyOrtcStatus", &ImsOrtcComponent::registerNotifyOrtcStatusInd);
    listen<hal::OrtcConnectInfoType>("NotifyConnectInfo", &ImsOrtcComponent::registerNotifyConnectInfoInd);
    listen<hal::ImsRtpRedunSignalMsgType>("RecvImsRtpRedunSignalMsg",
                                          &ImsOrtcComponent::registerRecvImsRtpRedunSignalMsgInd);
    listen<hal::ImsRtpRedunDataLinkStateInfoType>("NotifyImsRtpRedunDataLinkState",
                                                  &ImsOrtcComponent::registerNotifyImsRtpRedunDataLinkStateInd);
}

void ImsRun::addRequests() {
    hal::CallInfoType call{};
    call.callId = 1;
    hal::ImsRtpDataInfoType data{0, 1, 0, {1, 2, 3}, -1};  // the length is the client's word
    hal::ImsRtpRedunSignalMsgType signal{};
    signal.msgField1 = 1;
    add("setCallInfo", &ImsOrtcComponent::setCallInfo, call);
    add("setOrtcRoomInfo", &ImsOrtcComponent::setOrtcRoomInfo, {0, 1, 7, 1, 1});
    add("sendImsRtpData", &ImsOrtcComponent::sendImsRtpData, data);
    add("setImsRtpRemotePubIpAddr", &ImsOrtcComponent::setImsRtpRemotePubIpAddr, {0, 1, 0, 0, 5004, 5005, "192.0.2.1"});
    add("sendImsRtpRedunSignalMsg", &ImsOrtcComponent::sendImsRtpRedunSignalMsg, signal,
        holdsRecord<hal::ImsRtpRedunSignalMsgRspInfoType>);
}

void ImsRun::check() {
    mRun.onLooper([this] { listenToAll(); });
    addRequests();
    for (const auto& request : mRequests) mRun.checkRequest(request);
    mRun.checkTogether(mRequests);
}

// ---- The companion of the RF component

using AnyIccEvent = hal::VsIccEvent<1>;

Verdict holdsIccEvent(const Object& carrier) {
    constexpr size_t HEAD = offsetof(AnyIccEvent, data);
    Verdict head = readable(recordOf<AnyIccEvent>(carrier), HEAD);
    if (head.kind != Verdict::OK) return head;
    return readable(recordOf<AnyIccEvent>(carrier), HEAD + hal::carriedRecord<AnyIccEvent>(carrier).length);
}

Verdict holdsInteger(const Object& box) {
    return readable(&box, sizeof(mindroid::Integer));
}

void listenToVs(ComponentRun& run, VsComponent& component) {
    const auto listen = [&](const char* name, auto registration, const auto& check) {
        run.listen(
            name, true, [&](const auto& callback) { (component.*registration)(run.handler(), callback, nullptr); },
            check);
    };
    listen("ClatState", &VsComponent::registerClatStateInd, holdsRecord<hal::VsClatState>);
    listen("TxSharing", &VsComponent::registerTxSharingInd, holdsRecord<hal::VsTxSharingState>);
    listen("IccEvent", &VsComponent::registerIccEventInd, holdsIccEvent);
    run.listen(
        "screen state", true,
        [&](const auto& callback) {
            component.mScreenStateRegistrants->add(new mindroid::Registrant(run.handler(), callback, nullptr));
        },
        holdsInteger);
}

Verdict awaitReady(std::future<void> ready, std::chrono::milliseconds limit) {
    if (ready.wait_for(limit) == std::future_status::ready) return ok();
    return failed("an Integer 1 to mStateRegistrants", "none in " + std::to_string(limit.count()) + " ms");
}

bool saysReady(const Message& message) {
    if (!message.obj || holdsInteger(*message.obj).kind == Verdict::FAILED) return false;
    return static_cast<const mindroid::Integer*>(message.obj.get())->value() == 1;
}

// Sets `ready` once, when the component says that it is.
void listenToReady(ComponentRun& run, VsComponent& component, const std::shared_ptr<std::promise<void>>& ready) {
    const auto isTold = std::make_shared<bool>(false);
    component.mStateRegistrants->add(
        new mindroid::Registrant(run.handler(), new MessageCallback([ready, isTold](const sp<Message>& message) {
                                     if (saysReady(*message) && !std::exchange(*isTold, true)) ready->set_value();
                                 }),
                                 nullptr));
}

void checkVs(ComponentRun& run, const sp<VsComponent>& component) {
    const auto ready = std::make_shared<std::promise<void>>();
    run.onLooper([&] {
        listenToReady(run, *component, ready);
        listenToVs(run, *component);
    });
    run.checks().check("VsComponent: says that it is ready", COMPONENT_RULES,
                       [&] { return awaitReady(ready->get_future(), run.limit()); });
    // The RF component asks on its looper.
    const auto send = [&](const sp<Message>& reply) { run.onLooper([&] { component->getRfIccInfo(reply); }); };
    run.checkRequest({"VsComponent::getRfIccInfo", true, send, holdsRecord<hal::VsRfIccInfo>});
}

// ---- The library

Verdict typeVerdict(int32_t type) {
    if (type == ImsOrtcComponent::TYPE) return ok("an ImsOrtcComponent");
    if (type == VsComponent::TYPE) return ok("a VsComponent");
    return notChecked("nothing is known of this type");
}

void checkOne(ComponentRun& run, const sp<hal::Component>& component) {
    const int32_t type = component->getType();
    run.checks().check("registers type " + std::to_string(type), COMPONENT_RULES, [&] { return typeVerdict(type); });
    run.checks().check("its class", COMPONENT_RULES, [] { return notChecked("there is no type information"); });
    if (type == ImsOrtcComponent::TYPE) ImsRun(run, static_cast<ImsOrtcComponent*>(component.get())).check();
    if (type == VsComponent::TYPE) checkVs(run, static_cast<VsComponent*>(component.get()));
}

bool load(ComponentRun& run, const std::string& file, std::vector<sp<hal::Component>>& added) {
    const auto& all = hal::ComponentManager::getInstance()->components();
    const auto before = static_cast<ptrdiff_t>(all.size());
    bool isOpen = false;
    void* library = nullptr;
    run.onLooper([&] {
        isOpen = checkOpens(run.checks(), COMPONENT_RULES, file, RTLD_NOW | RTLD_LOCAL, library);
        added.assign(all.begin() + (isOpen ? before : static_cast<ptrdiff_t>(all.size())), all.end());
    });
    added.erase(std::remove(added.begin(), added.end(), nullptr), added.end());
    return isOpen && run.checks().prepare("adds components", COMPONENT_RULES, [&] {
        return added.empty() ? failed("at least one", "none") : ok(std::to_string(added.size()));
    });
}

}  // namespace

void checkComponent(Checks& checks, const std::string& file, std::chrono::milliseconds limit) {
    ElfFile elf(file);
    if (!checkFile(checks, COMPONENT_RULES, elf) || !checkNeeds(checks, COMPONENT_RULES, elf)) return;
    // Never destroyed: the component's threads may still tell it of events.
    auto& run = *new ComponentRun(checks, limit);
    std::vector<sp<hal::Component>> added;
    if (!load(run, file, added)) return;
    const bool isStarted = checks.prepare("starts", COMPONENT_THREADS, [&] {
        run.onLooper([] { hal::ComponentManager::getInstance()->init(0); });
        return ok();
    });
    if (!isStarted) return;
    for (const auto& component : added) checkOne(run, component);
    run.checkEvents();
}

}  // namespace compliance
