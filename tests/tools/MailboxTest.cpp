#include "tools/Mailbox.h"

#include <gtest/gtest.h>

namespace subsysctl {
namespace {

using namespace std::chrono_literals;

const auto LATER = Mailbox::Clock::now() + 1min;
const auto PAST = Mailbox::Clock::time_point();

Mailbox::Matches is(int wanted) {
    return [wanted](const Json& json) { return json == wanted; };
}

TEST(Mailbox, TakeAnswer_WhenTheServerDiedAfterItsAnswer_ThenTheAnswerFirst) {
    Mailbox mailbox;
    mailbox.putAnswer(1);
    mailbox.putDeath();
    EXPECT_EQ(1, mailbox.takeAnswer(is(1), LATER));
    EXPECT_EQ(std::nullopt, mailbox.takeAnswer(is(1), LATER));
    EXPECT_TRUE(mailbox.serverDied());
}

TEST(Mailbox, Put_WhenNobodyTakes_ThenTheFirstIndicationsAndTheLatestAnswersAreKept) {
    Mailbox mailbox;
    for (size_t i = 0; i < Mailbox::MAX_KEPT + 3; ++i) {
        mailbox.putIndication(i);
        mailbox.putAnswer(i);
    }
    EXPECT_EQ(3u, mailbox.lost());
    for (size_t i = 0; i < Mailbox::MAX_KEPT; ++i) ASSERT_EQ(i, mailbox.takeIndication(PAST));
    EXPECT_EQ(std::nullopt, mailbox.takeIndication(PAST));
    EXPECT_EQ(3, mailbox.takeAnswer([](const Json&) { return true; }, PAST));
    EXPECT_EQ(Mailbox::MAX_KEPT + 2, mailbox.takeAnswer(is(Mailbox::MAX_KEPT + 2), PAST));
}

}  // namespace
}  // namespace subsysctl
