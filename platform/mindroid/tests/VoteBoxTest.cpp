#include <mindroid/VoteBox.h>

#include "LoopFixture.h"

#include <mindroid/Boxes.h>

#include <gtest/gtest.h>

#include <thread>

namespace mindroid {
namespace {

class VoteBoxTest : public testing::Test {
protected:
    VoteBoxTest() {
        mBox->setCallback(new VoteCallback([this](const sp<Object>& result) {
            ++mCompleted;
            mResult = result;
            mThread = std::this_thread::get_id();
        }));
    }

    const sp<VoteBox> mBox = new VoteBox();
    const sp<Ticket> mFirst = new Ticket();
    const sp<Ticket> mSecond = new Ticket();
    std::atomic<int> mCompleted{0};
    sp<Object> mResult;
    std::thread::id mThread;
};

TEST_F(VoteBoxTest, StartVote_WhenTheBoxIsEmpty_ThenCompletesWithTrueAtOnceAndOnce) {
    mBox->startVote();
    EXPECT_EQ(mCompleted, 1);
    EXPECT_TRUE(static_cast<Boolean*>(mResult.get())->value());
    EXPECT_EQ(mThread, std::this_thread::get_id());
    mBox->startVote();
    EXPECT_EQ(mCompleted, 1);
}

TEST_F(VoteBoxTest, Vote_WhenTicketsGoUpAndDown_ThenCompletesWhenAllAreUpTogether) {
    mBox->AddTicket(mFirst);
    mBox->AddTicket(mSecond);
    mBox->AddTicket(mSecond);
    mBox->AddTicket(nullptr);
    mBox->startVote();
    mFirst->updateState(true);
    mFirst->updateState(false);
    mSecond->updateState(true);
    EXPECT_EQ(mCompleted, 0);
    mFirst->updateState(true);
    EXPECT_EQ(mCompleted, 1);
    mFirst->updateState(false);
    mFirst->updateState(true);
    EXPECT_EQ(mCompleted, 1);
}

TEST_F(VoteBoxTest, Callback_WhenItCallsTheBoxAndHoldsIt_ThenNeitherBlocksNorLeaks) {
    std::atomic<int> deaths{0};
    sp<VoteBox> box = new VoteBox();
    box->AddTicket(mFirst);
    box->setCallback(new VoteCallback([this, box, mortal = sp<Object>(new test::Mortal(deaths))](const auto&) {
        box->AddTicket(mSecond);
        mFirst->updateState(false);
    }));
    box->startVote();
    mFirst->updateState(true);
    EXPECT_EQ(deaths, 1);
}

TEST_F(VoteBoxTest, Ticket_WhenInTwoBoxesAndOneIsGone_ThenVotesInTheOtherEvenBeforeItsStart) {
    {
        const sp<VoteBox> gone = new VoteBox();
        gone->AddTicket(mFirst);
        gone->startVote();
    }
    mBox->AddTicket(mFirst);
    mFirst->updateState(true);
    EXPECT_EQ(mCompleted, 0);
    mBox->startVote();
    EXPECT_EQ(mCompleted, 1) << "all are up before the start";
}

TEST_F(VoteBoxTest, Vote_WhenManyThreadsRaise_ThenCompletesOnce) {
    for (const sp<Ticket>& ticket : {mFirst, mSecond}) mBox->AddTicket(ticket);
    mBox->startVote();
    test::countTrue(4, [&] {
        mFirst->updateState(true);
        mSecond->updateState(true);
        return true;
    });
    EXPECT_EQ(mCompleted, 1);
    EXPECT_NE(mThread, std::this_thread::get_id()) << "the last voter's";
}

}  // namespace
}  // namespace mindroid
