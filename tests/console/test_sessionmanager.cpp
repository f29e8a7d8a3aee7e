#include "sessionmanager.h"

#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace {

using Handle = std::unique_ptr<SessionHandle>;

class Registry : public testing::Test {
protected:
    Registry() {
        FakeZorvic::Reset();
        FakeZorvic::AddUnit("10.0.0.1", "guid-1", "Stage");
        FakeZorvic::AddUnit("10.0.0.2", "guid-2", "Lobby");
    }

    /// The handle is dropped at once.
    void Open(const std::string& host) { const Handle handle(Sessions->CreateSessionByIP(host)); }

    std::unique_ptr<SessionManager> Sessions = std::make_unique<SessionManager>();
};

/// As another thread finds it.
bool IsLocked(std::recursive_mutex& mutex) {
    return std::async(std::launch::async, [&] { return !std::unique_lock(mutex, std::try_to_lock).owns_lock(); }).get();
}

TEST_F(Registry, FindsAndDeletesASessionByGuidOrByTheHostTextItWasOpenedWith) {
    Open("10.0.0.1");
    Open("10.0.0.2");
    EXPECT_EQ(Handle(Sessions->GetSessionByGUID("guid-2"))->GetSession()->GetHost(), "10.0.0.2");
    EXPECT_EQ(Handle(Sessions->GetSessionByIP("10.0.0.2"))->GetSession()->GetHost(), "10.0.0.2");
    EXPECT_EQ(Handle(Sessions->GetSessionByIP("10.0.0.02")), nullptr);
    EXPECT_FALSE(Sessions->DeleteSessionByIP("guid-1"));
    EXPECT_TRUE(Sessions->DeleteSessionByGUID("guid-1"));
    EXPECT_EQ(FakeZorvic::LiveSessions("10.0.0.2"), 1U);
    EXPECT_TRUE(Sessions->DeleteSessionByIP("10.0.0.2"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0U);
    Sessions.reset();
    EXPECT_EQ(FindSession("guid-1"), nullptr);
}

TEST_F(Registry, KeepsNothingOfAUnitThatCannotBeUsed) {
    FakeZorvic::At("10.0.0.1").Reachable = false;
    FakeZorvic::At("10.0.0.2").Fail("GetUnitID", Zorvic::ZORVIC_STATUS_FAILED);
    FakeZorvic::AddUnit("10.0.0.3", "");
    for (const auto* host : {"10.0.0.1", "10.0.0.2", "10.0.0.3", "nowhere", ""}) {
        EXPECT_EQ(Handle(Sessions->CreateSessionByIP(host)), nullptr) << host;
    }
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0U);
}

TEST_F(Registry, ASecondSessionOfAUnitReplacesTheFirst) {
    FakeZorvic::AddUnit("stage.local", "guid-1", "Stage");
    Open("10.0.0.1");
    const Handle second(Sessions->CreateSessionByIP("stage.local"));
    ASSERT_TRUE(second);
    EXPECT_EQ(FakeZorvic::LiveSessions("10.0.0.1"), 0U);
    EXPECT_EQ(Handle(Sessions->GetSessionByGUID("guid-1"))->GetSession(), second->GetSession());
}

TEST_F(Registry, TheLastHandleReleasesTheLockAndOneMovedFromGrantsNothing) {
    std::recursive_mutex mutex;
    auto* session = Handle(Sessions->CreateSessionByIP("10.0.0.1"))->GetSession();
    auto outer = std::make_unique<SessionHandle>(session, std::unique_lock(mutex));
    auto inner = std::make_unique<SessionHandle>(session, std::unique_lock(mutex));
    outer.reset();
    auto moved = std::make_unique<SessionHandle>(std::move(*inner));
    EXPECT_EQ(inner->GetSession(), nullptr);
    EXPECT_EQ(moved->GetSession(), session);
    inner.reset();
    EXPECT_TRUE(IsLocked(mutex));
    moved.reset();
    EXPECT_FALSE(IsLocked(mutex));
}

}  // namespace
