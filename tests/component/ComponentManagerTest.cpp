#include "component/ComponentManager.h"

#include "component/ModuleManager.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/Boxes.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace hal;
using namespace mindroid;

namespace {

using Calls = std::vector<std::string>;

class RecordingComponent : public Component {
public:
    RecordingComponent(std::string name, Calls& calls, int32_t type = 1, int32_t voteMode = 0)
        : Component(voteMode, type), mName(std::move(name)), mCalls(calls) {}
    void init(int32_t instanceId) override {
        Component::init(instanceId);
        mCalls.push_back(mName + ".init " + std::to_string(instanceId));
        atInit();
    }
    void postInit(int32_t phase) override { mCalls.push_back(mName + ".postInit " + std::to_string(phase)); }

    std::function<void()> atInit = [] {};
    using Component::mModuleManager;

private:
    const std::string mName;
    Calls& mCalls;
};

class RecordingModule : public Module {
public:
    explicit RecordingModule(Calls& calls) : mCalls(calls) {}
    void onInit() override { mCalls.emplace_back("module.onInit"); }

private:
    Calls& mCalls;
};

class ComponentManagerTest : public testing::Test {
protected:
    test::LogCapture log;
    test::LooperThread looper;
    ComponentManager manager;
    Calls calls;
    test::Recorder<sp<Object>> ready;

    sp<Component> make(std::string name, int32_t type = 1, int32_t voteMode = 0) {
        return new RecordingComponent(std::move(name), calls, type, voteMode);
    }
    void listen() {
        manager.registeComponentReady(
            looper.handler(), new MessageCallback([this](const sp<Message>& message) { ready.add(message->obj); }));
    }
    void init(int32_t instanceId) {
        looper.run([&] { manager.init(instanceId); });
    }
    static void report(const sp<Component>& component, int32_t state) {
        const sp<Message> message = Message::obtain();
        message->obj = new Integer(state);
        component->handleProxyStateChanged(message);
    }
};

TEST_F(ComponentManagerTest, Init_WhenSeveralAreAdded_ThenThreePassesInOrderAndALateOneIsOnlyFound) {
    const sp<RecordingComponent> preset = new RecordingComponent("preset", calls);
    preset->atInit = [&] { preset->mModuleManager->addModule(new RecordingModule(calls)); };
    const sp<RecordingComponent> first = new RecordingComponent("first", calls);
    first->atInit = [&] { manager.add(make("late", 8)); };
    preset->setInstanceId(5);
    for (const sp<Component>& component :
         {sp<Component>(first), sp<Component>(), sp<Component>(preset), sp<Component>(preset)}) {
        manager.add(component);
    }
    init(2);
    EXPECT_EQ(calls,
              (Calls{"first.init 2", "preset.init 5", "module.onInit", "first.postInit 0", "preset.postInit 0"}));
    EXPECT_TRUE(manager.find(8));
}

TEST_F(ComponentManagerTest, Init_WhenNobodyVotes_ThenListenersAreToldOnce) {
    listen();
    manager.add(make("idle"));
    init(0);
    listen();  // Too late.
    looper.drain();
    EXPECT_EQ(ready.count(), 1u);
    EXPECT_EQ(log.count("ComponentManager", "all components are ready", ANDROID_LOG_DEBUG), 1u);
}

TEST_F(ComponentManagerTest, Vote_WhenSeveralVote_ThenReadyOnceAllAreUpTogether) {
    const sp<Component> a = make("a", 31, 1);
    const sp<Component> b = make("b", 32, 1);
    listen();
    for (const sp<Component>& component : {a, make("idle", 33, 2), b}) manager.add(component);
    init(0);
    report(a, 1);
    report(a, 0);
    report(b, 1);
    looper.drain();
    EXPECT_EQ(ready.count(), 0u);
    report(a, 9);
    report(a, 0);
    report(a, 1);
    looper.drain();
    EXPECT_EQ(ready.count(), 1u);
    EXPECT_EQ(
        log.lines("ComponentManager"),
        (std::vector<test::LogLine>{{ANDROID_LOG_DEBUG, "ComponentManager", "initComponents add tick for type 31"},
                                    {ANDROID_LOG_DEBUG, "ComponentManager", "initComponents add tick for type 32"},
                                    {ANDROID_LOG_DEBUG, "ComponentManager", "all components are ready"}}));
}

TEST_F(ComponentManagerTest, Find_WhenSeveralMatch_ThenTheFirstRegistered) {
    const sp<Component> first = make("first", 7);
    const sp<Component> second = make("second", 7);
    second->setInstanceId(1);
    EXPECT_EQ(getComponent<RecordingComponent>(7), nullptr);
    for (const sp<Component>& component : {sp<Component>(), first, second}) {
        ComponentManager::getInstance()->add(component);
    }
    EXPECT_EQ(ComponentManager::getInstance()->find(7), first);
    EXPECT_EQ(ComponentManager::getInstance()->find(8), nullptr);
    EXPECT_EQ(getComponent<RecordingComponent>(7), first);
    EXPECT_EQ(getComponent<RecordingComponent>(7, 0), first);
    EXPECT_EQ(getComponent<RecordingComponent>(7, 1), second);
    EXPECT_EQ(getComponent<RecordingComponent>(7, 2), nullptr);
}

}  // namespace
