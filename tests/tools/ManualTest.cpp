#include "tools/Manual.h"

#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"
#include "tools/Help.h"
#include "tools/Parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

namespace subsysctl {
namespace {

Manual manual() {
    CLI::App app;
    CommandLine line;
    addVerbs(app, line);
    addGlobalOptions(app, line);
    addOuterVerbs(app, line);
    return manualOf(app);
}

TEST(Manual, Verbs_WhenListed_ThenEachIsExplainedAndItsExampleIsRight) {
    for (const ManualVerb& verb : manual().verbs) {
        EXPECT_FALSE(verb.text.empty()) << verb.name;
        for (const ManualOption& option : verb.options) EXPECT_FALSE(option.text.empty()) << verb.name << option.name;
        std::istringstream words(verb.example.substr(0, verb.example.find(" <")));
        CommandLine line;
        std::ostringstream out;
        Output output(out, out, {});
        Parser(line, Parser::WHOLE_CALL).parse({std::istream_iterator<std::string>(words), {}}, output);
        EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("subsysctl: "))) << out.str();
    }
}

TEST(Help, Print_WhenNarrow_ThenNoLineIsLonger) {
    const Manual all = manual();
    std::stringstream out;
    printHelp(all, 40, out);
    for (const ManualVerb& verb : all.verbs) printHelp(all, verb, 40, out);
    EXPECT_THAT(out.str(), testing::HasSubstr("  set-ims-rtp-remote-pub-ip-addr\n      Sets the remote"));
    for (std::string line; std::getline(out, line);) EXPECT_LE(line.size(), 40u) << line;
}

TEST(Help, Print_WhenOfOneVerb_ThenItsOptionsWithUnitAndRange) {
    const Manual all = manual();
    std::ostringstream out;
    printHelp(all, *all.find("send-icc-cmd"), 100, out);
    EXPECT_THAT(out.str(),
                testing::HasSubstr("\n  subsysctl send-icc-cmd [--req-id N] [--data HEX] [--timeout-ms N]\n"));
    EXPECT_THAT(out.str(), testing::HasSubstr("\n  --timeout-ms N                Milliseconds; 4000 at most. "
                                              "-2147483648 to 2147483647.\n"));
}

// The program's own output, read by the programs that it is written for.
class Formats : public testing::Test {
protected:
    // What the shell prints when it runs the script beside the file that is written for it.
    std::string run(const std::string& shell, const std::string& format, const std::string& script) {
        test::Process write({"/bin/sh", "-c", SUBSYSCTL " help --as " + format + " >" + file()});
        EXPECT_EQ(write.wait(), 0);
        test::Process process({"/usr/bin/env", shell, "-c", script});
        process.wait();
        return process.output();
    }
    std::string file() const { return mFolder.path() / "file"; }

    const test::NamesFolder mFolder;
};

TEST_F(Formats, ManPage_WhenFormatted_ThenNoWarningAndAllIsThere) {
    EXPECT_EQ(run("sh", "man", "groff -man -Tascii -ww -z " + file() + " 2>&1"), "");
    const std::string page = run("sh", "man", "groff -man -Tascii -P-cbou " + file());
    for (const ManualVerb& verb : manual().verbs) EXPECT_THAT(page, testing::HasSubstr("subsysctl " + verb.example));
    EXPECT_THAT(page, testing::ContainsRegex("\n +75 +Another +process"));
}

TEST_F(Formats, Bash_WhenCompleted_ThenVerbsOptionsAndValues) {
    const std::pair<std::string, std::string> cases[] = {{"set-os", "set-osc-freq-clk"},
                                                         {"get-lcd-info --t", "--timeout --take-over --type"},
                                                         {"watch --for ''", ""},
                                                         {"watch --for 1 --co", "--count"},
                                                         {"new p", "plugin"},
                                                         {"help --as z", "zsh"},
                                                         {"help sta", "status"},
                                                         {"trace --output " + file(), file()},
                                                         {"--serial ''", ""},
                                                         {"get-swtp-status --js", "--json"}};
    for (const auto& [words, completions] : cases) {
        const std::string complete =
            ". " + file() + "; complete -p subsysctl >/dev/null || exit; COMP_WORDS=(subsysctl " + words +
            "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _subsysctl 2>/dev/null; " + "printf '%s' \"${COMPREPLY[*]}\"";
        EXPECT_EQ(run("bash", "bash", complete), completions) << words;
    }
}

TEST_F(Formats, ZshAndFish_WhenCompleted_ThenVerbsAndOptions) {
    const std::string zsh =
        "_describe() { print -l ${(P)2}; }; compadd() { shift; print -l -- $@; }; words=(subsysctl ";
    EXPECT_THAT(run("zsh", "zsh", zsh + "get-); CURRENT=2; . " + file()),
                testing::HasSubstr("\nget-icc-state:State of"));
    EXPECT_THAT(run("zsh", "zsh", zsh + "watch --c); CURRENT=3; . " + file()), testing::HasSubstr("\n--count\n"));
    EXPECT_EQ(run("zsh", "zsh", zsh + "new ''); CURRENT=3; . " + file()), "plugin\ncomponent\nclient\n");
    const std::string fish = ". " + file() + "; complete -C ";
    EXPECT_THAT(run("fish", "fish", fish + "'subsysctl get-ic'"), testing::StartsWith("get-icc-state\tState of"));
    EXPECT_THAT(run("fish", "fish", fish + "'subsysctl watch --co'"), testing::StartsWith("--count\tEnd after"));
    EXPECT_THAT(run("fish", "fish", fish + "'subsysctl new p'"), testing::HasSubstr("plugin"));
}

}  // namespace
}  // namespace subsysctl
