#include "feed/feed.h"

#include "fault.h"

#include <algorithm>
#include <random>
#include <utility>

namespace ZorvicUnit {

namespace {

std::uint64_t RandomNumber() {
    std::random_device random;
    return (std::uint64_t{random()} << 32U | random()) | 1U;  // 0 stands for none
}

}  // namespace

Feed::Feed() : RunNumber(RandomNumber()) {}

std::uint64_t Feed::Publish(std::vector<FeedChange> changes) {
    bool any = false;
    std::uint64_t revision = 0;
    {
        const std::scoped_lock lock(Mutex);
        for (FeedChange& change : changes)
            any = Apply(change) || any;
        if (any) DropTombstones();
        revision = Last;
    }
    if (any) Changed.notify_all();  // whoever wakes up does not meet the lock
    return revision;
}

std::uint64_t Feed::Revision() const {
    const std::scoped_lock lock(Mutex);
    return Last;
}

void Feed::Expect(const std::string& address, std::uint64_t revision) {
    const std::scoped_lock lock(Mutex);
    for (Subscription* subscriber : Subscribers) {
        if (subscriber->Address != address || subscriber->Sent >= revision) continue;
        subscriber->Expected = revision;
        subscriber->Hurry.notify_one();
    }
}

std::chrono::steady_clock::duration Feed::Pace() const {
    return std::chrono::steady_clock::duration(std::chrono::seconds(1)) * Subscribers.size() / MostBatchesASecond;
}

bool Feed::Beats() const {
    using std::chrono::steady_clock;
    const steady_clock::time_point last{steady_clock::duration(LastBeat.load())};
    return last == steady_clock::time_point() || steady_clock::now() - last < BeatLimit;
}

bool Feed::Apply(FeedChange& change) {
    const auto found = Slots.find(change.Key);
    if (found == Slots.end() && change.Gone) return false;
    if (found != Slots.end() && found->second.Gone == change.Gone && *found->second.Piece == *change.Piece)
        return false;
    Slot& slot = Slots[change.Key];
    ByNumber.erase(slot.Number);
    Tombstones.erase(slot.Number);
    slot = {.Number = ++Last, .Piece = std::move(change.Piece), .Gone = change.Gone};
    ByNumber.emplace(slot.Number, change.Key);
    if (slot.Gone) Tombstones.insert(slot.Number);
    return true;
}

// A part that is gone is kept until every subscriber has been told, and the latest ones for who comes back.
void Feed::DropTombstones() {
    std::uint64_t told = Last;
    for (const Subscription* subscriber : Subscribers)
        if (subscriber->Started && !subscriber->Over) told = std::min(told, subscriber->Sent);
    const auto tooMany = [&] {
        return !Tombstones.empty() &&
               Tombstones.size() > (*Tombstones.begin() <= told ? KeptTombstones : MaxTombstones);
    };
    while (tooMany()) {
        const std::uint64_t number = *Tombstones.begin();
        Forgotten = number;
        for (Subscription* subscriber : Subscribers)
            if (subscriber->Started && subscriber->Sent < number) subscriber->End();
        const auto part = ByNumber.find(number);
        Slots.erase(part->second);
        ByNumber.erase(part);
        Tombstones.erase(Tombstones.begin());
    }
}

void Feed::EndSubscriptions() {
    const std::scoped_lock lock(Mutex);
    for (Subscription* subscriber : Subscribers)
        subscriber->End();
    Changed.notify_all();
}

void Feed::Close() {
    EndSubscriptions();
    const std::scoped_lock lock(Mutex);
    Closed = true;
    Changed.notify_all();
}

Feed::Subscription::Subscription(Feed& feed, const Wishes& wishes)
    : Source(feed), StateChanges(wishes.StateChanges), Address(wishes.Address) {
    const std::scoped_lock lock(Source.Mutex);
    if (Source.Subscribers.size() >= MaxSubscribers) throw Fault(FaultKind::Refused, "too many consoles");
    Source.Subscribers.insert(this);
    Started = CanResume(wishes);
    if (Started) Sent = wishes.KnownRevision;
}

bool Feed::Subscription::CanResume(const Wishes& wishes) const {
    return wishes.KnownRun == Source.RunNumber && wishes.KnownRevision >= Source.Forgotten &&
           wishes.KnownRevision <= Source.Last;
}

Feed::Subscription::~Subscription() {
    const std::scoped_lock lock(Source.Mutex);
    Source.Subscribers.erase(this);
}

void Feed::Subscription::End() {
    Over = true;
    Hurry.notify_one();
}

std::optional<Feed::Subscription::Batch> Feed::Subscription::Next(std::chrono::milliseconds limit) {
    std::unique_lock lock(Source.Mutex);
    const auto over = [this] { return Over || Source.Closed; };
    if (!Started && !over()) return TakeSnapshot();
    Hurry.wait_until(lock, Due, [&] { return over() || Expected > Sent; });
    Source.Changed.wait_for(lock, limit, [&] { return over() || Source.Last > Sent; });
    if (over()) return std::nullopt;
    Due = std::chrono::steady_clock::now() + Source.Pace();
    return TakeChanges();
}

Feed::Subscription::Batch Feed::Subscription::TakeSnapshot() {
    Batch batch{.Revision = Source.Last, .Pieces = {}, .Snapshot = true, .AllStates = {}};
    batch.Pieces.reserve(Source.Slots.size());
    for (const auto& [key, slot] : Source.Slots)
        if (!slot.Gone && (StateChanges || key.Kind != FeedKind::States)) batch.Pieces.push_back(slot.Piece);
    if (!StateChanges) batch.AllStates = AllStates();
    Started = true;
    Sent = batch.Revision;
    return batch;
}

Feed::Subscription::Batch Feed::Subscription::TakeChanges() {
    Batch batch{.Revision = Source.Last, .Pieces = {}, .Snapshot = false, .AllStates = {}};
    for (auto part = Source.ByNumber.upper_bound(Sent); part != Source.ByNumber.end(); ++part) {
        if (StateChanges || part->second.Kind != FeedKind::States) {
            batch.Pieces.push_back(Source.Slots.at(part->second).Piece);
        } else if (!batch.AllStates) {
            batch.AllStates = AllStates();
        }
    }
    Sent = batch.Revision;
    return batch;
}

std::vector<PieceBytes> Feed::Subscription::AllStates() const {
    std::vector<PieceBytes> states;
    for (auto part = Source.Slots.lower_bound({FeedKind::States, {}});
         part != Source.Slots.end() && part->first.Kind == FeedKind::States; ++part)
        if (!part->second.Gone) states.push_back(part->second.Piece);
    return states;
}

}  // namespace ZorvicUnit
