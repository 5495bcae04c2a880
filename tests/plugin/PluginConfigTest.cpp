#include "plugin/PluginConfig.h"

#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using test::LogLine;

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* CONFIG = "/odm/etc/plugin_config.xml";

Pairs load(hal::PluginConfig& config) {
    Pairs pairs;
    for (const auto& info : config.loadConfig()) pairs.emplace_back(info.name, info.path);
    return pairs;
}

Pairs loadText(const std::string& text) {
    const test::DeviceFolder device;
    device.write(CONFIG, text);
    hal::PluginConfig config("not read");
    return load(config);
}

std::string repeat(const std::string& text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i) all += text;
    return all;
}

TEST(LoadConfig, WhenItemsVary_ThenListsAsWritten) {
    const struct {
        std::string items;
        Pairs expected;
    } cases[] = {
        {R"(<item name="A" path="/p"/>)", {{"A", "/p"}}},
        {R"(<item path="/p" name="A" more="x"><item name="C" path="/c"/>text</item>)", {{"A", "/p"}}},
        // What an item lacks comes from the latest one that had it.
        {R"(<item name="A" path="/p"/><item name="B"/>)", {{"A", "/p"}, {"B", "/p"}}},
        {R"(<item name="A" path="/p"/><item/>)", {{"A", "/p"}, {"A", "/p"}}},
        {R"(<item path="/p"/><item name="B"/>)", {{"B", "/p"}}},
        {R"(<item name="A"/><other name="B" path="/q"/>)", {}},
        {R"(<item name="A" path="/p"/><item name="A" path="/q"/>)", {{"A", "/p"}, {"A", "/q"}}},
        {R"(<item name="" path=""/>)", {{"", ""}}},
        {R"(<Item name="A" path="/p"/>)", {}},
    };
    for (const auto& [items, expected] : cases) {
        EXPECT_EQ(loadText("<x/><plugin_config>" + items + "</plugin_config>"), expected) << items;
    }
}

TEST(LoadConfig, WhenLoadedTwice_ThenLogsEachAttributeUntaggedAndAppends) {
    const test::DeviceFolder device;
    const test::LogCapture log;
    device.write(CONFIG, R"(<plugin_config><item name="A" path="/p"/></plugin_config>)");
    hal::PluginConfig config("not read");
    EXPECT_EQ(load(config), (Pairs{{"A", "/p"}}));
    // The log gives its own default tag to a line that has none.
    std::vector<std::string> texts;
    for (const LogLine& line : log.lines()) {
        if (line.priority == ANDROID_LOG_INFO) texts.push_back(line.text);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"The file of plugin_config.xml is loaded.", "Get item name =A !\n",
                                               "configName =A !\n", "Get item path =/p !\n", "configPath =/p !\n"}));
    EXPECT_EQ(load(config), (Pairs{{"A", "/p"}, {"A", "/p"}}));
}

TEST(LoadConfig, WhenThereIsNoReadableFile_ThenEmptyAndSilent) {
    const test::DeviceFolder device;
    const test::LogCapture log;
    hal::PluginConfig config("not read");
    EXPECT_EQ(load(config), Pairs());
    device.makeDirectory(CONFIG);
    EXPECT_EQ(load(config), Pairs());
    device.remove(CONFIG);
    device.makeFifo(CONFIG);
    EXPECT_EQ(load(config), Pairs());
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST(LoadConfig, WhenHostile_ThenEmptyOrPartial) {
    constexpr size_t MILLION = 1'000'000;
    const std::string item = R"(<item name="A" path="/p"/>)";
    EXPECT_EQ(loadText(repeat("<item>", MILLION)), Pairs());
    EXPECT_EQ(loadText("<plugin_config>" + item + repeat("<item>", MILLION) + repeat("</item>", MILLION)), Pairs());
    const std::string whole = "<plugin_config>" + item + "</plugin_config>";
    for (size_t size = 0; size < whole.size(); ++size) EXPECT_EQ(loadText(whole.substr(0, size)), Pairs()) << size;
    EXPECT_EQ(loadText(std::string(MILLION, '\0')), Pairs());
    EXPECT_EQ(loadText("<plugin_config>" + repeat(item, 10'000) + "</plugin_config>").size(), 10'000U);
}

}  // namespace
