#include "fault.h"
#include "feed/feed.h"
#include "feed/frames.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using ZorvicUnit::Feed;
using ZorvicUnit::FeedChange;
using ZorvicUnit::FeedKind;

namespace {

constexpr std::chrono::milliseconds NoWait(0);
constexpr std::chrono::seconds Watchdog(60);

FeedChange Change(const std::string& id, const std::string& bytes, bool gone = false) {
    return {{FeedKind::Presets, id}, std::make_shared<const std::string>(bytes), gone};
}

std::vector<std::string> Texts(const std::optional<Feed::Subscription::Batch>& batch) {
    std::vector<std::string> texts;
    for (const auto& piece : batch->Pieces)
        texts.push_back(*piece);
    return texts;
}

TEST(Feed, ASlowSubscriberFindsTheNewestOfEachPartAndKeepsNothingOldAlive) {
    Feed feed;
    feed.Publish({Change("a", "a0"), Change("b", "b0")});
    Feed::Subscription slow(feed);
    EXPECT_THAT(Texts(slow.Next(NoWait)), ElementsAre("a0", "b0"));
    std::vector<std::weak_ptr<const std::string>> old;
    for (int number = 1; number <= 1'000; ++number) {
        auto change = Change("a", "a" + std::to_string(number));
        old.push_back(change.Piece);
        feed.Publish({std::move(change)});
    }
    old.pop_back();
    for (const auto& piece : old)
        EXPECT_TRUE(piece.expired());
    const auto revision = feed.Revision();
    EXPECT_EQ(feed.Publish({Change("b", "b0"), Change("never there", "", true)}), revision);
    const auto batch = slow.Next(NoWait);
    EXPECT_THAT(Texts(batch), ElementsAre("a1000"));
    EXPECT_EQ(batch->Revision, revision);
    EXPECT_THAT(Texts(slow.Next(NoWait)), IsEmpty());
}

TEST(Feed, GonePartsAreToldOnceAndLeaveSnapshots) {
    Feed feed;
    feed.Publish({Change("a", "a0"), Change("b", "b0")});
    Feed::Subscription old(feed);
    old.Next(NoWait);
    feed.Publish({Change("a", "no a", true)});
    Feed::Subscription young(feed);
    EXPECT_THAT(Texts(young.Next(NoWait)), ElementsAre("b0"));
    feed.Publish({Change("c", "no c", true), Change("b", "b1")});
    EXPECT_THAT(Texts(old.Next(NoWait)), ElementsAre("no a", "b1"));
    EXPECT_THAT(Texts(young.Next(NoWait)), ElementsAre("b1"));
    feed.Publish({Change("a", "a2")});
    EXPECT_THAT(Texts(old.Next(NoWait)), ElementsAre("a2"));
}

TEST(Feed, WhoComesBackIsToldWhatHasChangedUnlessSomethingIsForgotten) {
    Feed feed;
    feed.Publish({Change("a", "a0"), Change("b", "b0")});
    const std::uint64_t left = feed.Revision();
    feed.Publish({Change("a", "no a", true), Change("c", "c0")});
    const auto told = [&](std::uint64_t run, std::uint64_t revision) {
        Feed::Subscription back(feed, {.KnownRun = run, .KnownRevision = revision});
        const auto batch = back.Next(NoWait);
        return std::pair(batch->Snapshot, Texts(batch));
    };
    EXPECT_EQ(told(feed.Run(), left), std::pair(false, std::vector<std::string>{"no a", "c0"}));
    const std::pair snapshot(true, std::vector<std::string>{"b0", "c0"});
    EXPECT_EQ(told(feed.Run() + 1, left), snapshot) << "the revision of another life of the unit";
    EXPECT_EQ(told(feed.Run(), feed.Revision() + 1), snapshot);
    for (int number = 0; number < 2'000; ++number) {
        feed.Publish({Change("d", "there")});
        feed.Publish({Change(std::to_string(number), "there")});
        feed.Publish({Change(std::to_string(number), "gone", true)});
    }
    EXPECT_TRUE(told(feed.Run(), left).first) << "who knows which parts of its state are gone";
}

TEST(Feed, ASubscriberThatNeverReadsIsEndedBeforeNoticesPileUp) {
    Feed feed;
    Feed::Subscription stuck(feed);
    Feed::Subscription reading(feed);
    stuck.Next(NoWait);
    reading.Next(NoWait);
    for (int number = 0; number < 25'000; ++number) {
        feed.Publish({Change(std::to_string(number), "there")});
        feed.Publish({Change(std::to_string(number), "gone", true)});
        ASSERT_TRUE(reading.Next(NoWait));
    }
    EXPECT_FALSE(stuck.Next(NoWait));
}

TEST(Feed, EndingWakesWaitingSubscribersAndClosingLetsNoneBegin) {
    Feed feed;
    Feed::Subscription first(feed);
    first.Next(NoWait);
    std::jthread reader([&] { EXPECT_FALSE(first.Next(Watchdog)); });
    feed.EndSubscriptions();
    reader.join();
    Feed::Subscription second(feed);
    EXPECT_TRUE(second.Next(NoWait));
    feed.Close();
    EXPECT_FALSE(second.Next(NoWait));
    Feed::Subscription third(feed);
    EXPECT_FALSE(third.Next(NoWait));
}

TEST(Feed, OfManySubscribersEachIsServedLessOftenAndFindsTheNewest) {
    Feed feed;
    std::vector<std::unique_ptr<Feed::Subscription>> crowd(200);
    for (auto& one : crowd)
        one = std::make_unique<Feed::Subscription>(feed);
    Feed::Subscription& one = *crowd.front();
    const auto serve = [&] { return Texts(one.Next(Watchdog)); };
    feed.Publish({Change("a", "a0")});
    EXPECT_THAT(serve(), ElementsAre("a0"));
    feed.Publish({Change("a", "a1")});
    EXPECT_THAT(serve(), ElementsAre("a1")) << "nobody waits after a snapshot";
    const auto begin = std::chrono::steady_clock::now();
    feed.Publish({Change("a", "a2")});
    feed.Publish({Change("a", "a3")});
    EXPECT_THAT(serve(), ElementsAre("a3"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(40));
}

TEST(Frames, StayBelowOneMebibyteAndShowTheirEnd) {
    Feed feed;
    feed.Publish({Change("a", std::string(525'000, 'a')), Change("b", std::string(525'000, 'b')), Change("c", "c"),
                  Change("d", "d")});
    Feed::Subscription subscription(feed);
    std::vector<zorvic::v1::Frame> frames;
    const auto keep = [&](const zorvic::v1::Frame& frame) {
        frames.push_back(frame);
        return true;
    };
    EXPECT_TRUE(WriteFrames(subscription.Next(NoWait).value(), keep));
    ASSERT_EQ(frames.size(), 3U);
    for (const auto& frame : frames) {
        EXPECT_LT(frame.ByteSizeLong(), 1024U * 1024U);
        EXPECT_TRUE(frame.snapshot() && frame.more() == (&frame != &frames.back()));
    }
    EXPECT_THAT(frames.back().pieces(), ElementsAre("c", "d"));
    EXPECT_TRUE(WriteFrames(subscription.Next(NoWait).value(), keep));  // the heartbeat
    EXPECT_TRUE(frames.back().pieces().empty());
    EXPECT_FALSE(frames.back().snapshot());
}

}  // namespace
