#include "tools/Mailbox.h"

#include <gtest/gtest.h>

namespace subsysctl {
namespace {

using namespace std::chrono_literals;

const auto kLater = Mailbox::Clock::now() + 1min;
const auto kPast = Mailbox::Clock::time_point();

Mailbox::Matches is(int wanted) {
    return [wanted](const Json& json) { return json == wanted; };
}

TEST(Mailbox, TakeAnswer_WhenTheServerDiedAfterItsAnswer_ThenTheAnswerFirst) {
    Mailbox mailbox;
    mailbox.putAnswer(1);
    mailbox.putDeath();
    EXPECT_EQ(1, mailbox.takeAnswer(is(1), kLater));
    EXPECT_EQ(std::nullopt, mailbox.takeAnswer(is(1), kLater));
    EXPECT_TRUE(mailbox.serverDied());
}

TEST(Mailbox, Put_WhenNobodyTakes_ThenTheFirstIndicationsAndTheLatestAnswersAreKept) {
    Mailbox mailbox;
    for (size_t i = 0; i < Mailbox::kMaxKept + 3; ++i) {
        mailbox.putIndication(i);
        mailbox.putAnswer(i);
    }
    EXPECT_EQ(3u, mailbox.lost());
    for (size_t i = 0; i < Mailbox::kMaxKept; ++i) ASSERT_EQ(i, mailbox.takeIndication(kPast));
    EXPECT_EQ(std::nullopt, mailbox.takeIndication(kPast));
    EXPECT_EQ(3, mailbox.takeAnswer([](const Json&) { return true; }, kPast));
    EXPECT_EQ(Mailbox::kMaxKept + 2, mailbox.takeAnswer(is(Mailbox::kMaxKept + 2), kPast));
}

}  // namespace
}  // namespace subsysctl
