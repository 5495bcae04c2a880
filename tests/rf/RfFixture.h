#pragma once

#include "component/ComponentManager.h"
#include "rf/IccProxy.h"
#include "rf/RfSubsysComponent.h"
#include "tests/rf/FakeVsComponent.h"
#include "tests/rf/IccPluginModel.h"
#include "tests/support/Await.h"
#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace test {

// A device with the test plugin and the ICC module enabled; the components that a test adds belong to `mLooper`.
class RfFixture : public ::testing::Test {
protected:
    RfFixture() {
        mDevice.write("/vendor/build.prop", "persist.vendor.nuvex.icc.module.enable=true\n");
        std::filesystem::create_symlink(RF_TEST_PLUGIN, mDevice.place(PLUGIN));
    }
    // What the plugin was called with, once that many calls came.
    [[nodiscard]] std::vector<std::string> calls(size_t count) {
        EXPECT_TRUE(iccPlugin().calls.await(count));
        return iccPlugin().calls.all();
    }
    void expectLogged(const char* tag, int priority, std::initializer_list<std::string> lines) const {
        for (const std::string& line : lines) EXPECT_TRUE(mLog.has(tag, line, priority)) << line;
    }
    template <typename T>
    mindroid::sp<T> add() {
        return mLooper.run([] {
            mindroid::sp<T> component = new T();
            hal::ComponentManager::getInstance()->add(component);
            return component;
        });
    }
    void initComponents() {
        mLooper.run([] { hal::ComponentManager::getInstance()->init(0); });
    }

    static constexpr const char* PLUGIN = "/vendor/lib64/libiccapis.so";
    const DeviceFolder mDevice;
    const LogCapture mLog;
    LooperThread mLooper;
};

}  // namespace test
