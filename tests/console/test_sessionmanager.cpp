#include "fixtures.h"

#include <future>
#include <mutex>

namespace {

using Handle = std::unique_ptr<SessionHandle>;

class Registry : public UnitTest {
protected:
    std::string HostOf(SessionHandle* found) {
        const Handle handle(found);
        return handle ? handle->GetSession()->GetHost() : "none";
    }
};

/// As another thread finds it.
bool IsLocked(std::recursive_mutex& mutex) {
    return std::async(std::launch::async, [&] { return !std::unique_lock(mutex, std::try_to_lock).owns_lock(); }).get();
}

TEST_F(Registry, FindsAndDeletesASessionByGuidOrByTheHostTextItWasOpenedWith) {
    FakeZorvic::AddUnit("other", "guid-2");
    EXPECT_EQ(HostOf(Sessions.CreateSessionByIP("other")), "other");
    EXPECT_EQ(HostOf(Sessions.GetSessionByGUID("guid")), "host");
    EXPECT_EQ(HostOf(Sessions.GetSessionByIP("host")), "host");
    EXPECT_EQ(HostOf(Sessions.GetSessionByIP("Host")), "none");
    EXPECT_FALSE(Sessions.DeleteSessionByIP("guid"));
    EXPECT_TRUE(Sessions.DeleteSessionByGUID("guid"));
    EXPECT_EQ(FakeZorvic::LiveSessions("other"), 1);
    EXPECT_TRUE(Sessions.DeleteSessionByIP("other"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0);
}

TEST_F(Registry, KeepsOneSessionOfAUnitAndNothingOfOneThatCannotBeUsed) {
    FakeZorvic::AddUnit("stage.local", "guid");
    EXPECT_EQ(HostOf(Sessions.CreateSessionByIP("stage.local")), "stage.local");
    EXPECT_EQ(HostOf(Sessions.GetSessionByGUID("guid")), "stage.local");
    EXPECT_EQ(FakeZorvic::LiveSessions("host"), 0);
    FakeZorvic::AddUnit("unreachable", "guid-1").Reachable = false;
    FakeZorvic::AddUnit("failing", "guid-2").Fail("GetUnitID", Zorvic::ZORVIC_STATUS_FAILED);
    FakeZorvic::AddUnit("nameless", "");
    for (const auto* host : {"unreachable", "failing", "nameless", "nowhere", ""})
        EXPECT_EQ(HostOf(Sessions.CreateSessionByIP(host)), "none") << host;
    EXPECT_EQ(FakeZorvic::LiveSessions(), 1);
}

TEST_F(Registry, TheLastHandleReleasesTheLockAndOneMovedFromGrantsNothing) {
    std::recursive_mutex mutex;
    auto* session = Handle(Sessions.GetSessionByGUID("guid"))->GetSession();
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
