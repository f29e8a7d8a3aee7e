#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// Kinds of state, in the order in which a snapshot sends them.
enum class FeedKind { Identity, Presets, States, Assets, Hardware, Drives, TimeCodes };

/// Names one independently changing part of the state: a preset by its key, an asset by its path, the only part of
/// its kind by an empty Id.
struct FeedKey {
    FeedKind Kind = FeedKind::Identity;
    std::string Id;
    // NOLINTNEXTLINE(modernize-use-nullptr): the check misreads a defaulted comparison
    auto operator<=>(const FeedKey&) const = default;
};

/// A serialised Piece message, shared by every console it is sent to.
using PieceBytes = std::shared_ptr<const std::string>;

/// The newest value of one part. Gone: the piece tells consoles to drop the part; a snapshot does not mention it.
struct FeedChange {
    FeedKey Key;
    PieceBytes Piece;
    bool Gone = false;
};

/// The unit's state as consoles see it: for every part its newest piece, numbered by the change that made it. A
/// subscriber that falls behind finds only newest pieces, so nothing queues however slow it reads. Safe to use from
/// several threads; nothing is called with the lock held.
class Feed {
public:
    class Subscription;

    Feed();

    /// Publishes the changes in one step and gives the revision at which they show. What is the same as before is no
    /// change; with no change at all the revision stays.
    std::uint64_t Publish(std::vector<FeedChange> changes);
    std::uint64_t Revision() const;
    /// The console at this address asked for what shows at the revision, and waits for it: it is told at once.
    void Expect(const std::string& address, std::uint64_t revision);
    /// Random; tells the revisions of this feed from those of the unit's earlier lives.
    std::uint64_t Run() const { return RunNumber; }

    /// The source of the changes says that it is alive, however little changes. From the first time on it has to.
    void Beat() { LastBeat = std::chrono::steady_clock::now().time_since_epoch().count(); }
    /// False when it has not said so for BeatLimit: then nobody may be told that all is well.
    bool Beats() const;
    static constexpr std::chrono::seconds BeatLimit{1};

    /// Ends all subscriptions that there are; new ones can begin.
    void EndSubscriptions();
    /// Ends all subscriptions, and lets none begin.
    void Close();

private:
    struct Slot {
        std::uint64_t Number = 0;
        PieceBytes Piece;
        bool Gone = false;
    };
    // A subscriber that would keep more notices of gone parts alive is ended; it comes back with a snapshot.
    static constexpr std::size_t MaxTombstones = 20'000;
    // So many are kept for those who lost their link and may come back.
    static constexpr std::size_t KeptTombstones = 1'000;

    // How many batches all subscribers together are given in a second: what 50 of them need to miss no tick and no
    // command. With more of them each is given fewer, so that their crowd does not stand in front of a command.
    static constexpr std::size_t MostBatchesASecond = 4'000;

    bool Apply(FeedChange& change);
    void DropTombstones();
    std::chrono::steady_clock::duration Pace() const;

    const std::uint64_t RunNumber;
    std::atomic<std::chrono::steady_clock::rep> LastBeat = 0;
    mutable std::mutex Mutex;  ///< guards everything below
    std::condition_variable Changed;
    std::map<FeedKey, Slot> Slots;
    std::map<std::uint64_t, FeedKey> ByNumber;  ///< the same parts in the order of their last change
    std::set<std::uint64_t> Tombstones;         ///< numbers of the slots that are gone
    std::set<Subscription*> Subscribers;
    std::uint64_t Last = 0;
    std::uint64_t Forgotten = 0;  ///< number of the latest tombstone that is no more
    bool Closed = false;
};

/// One console's view of the feed, read by one thread. The feed must outlive it.
class Feed::Subscription {
public:
    struct Batch {
        std::uint64_t Revision = 0;      ///< reached once all pieces are applied
        std::vector<PieceBytes> Pieces;  ///< empty: nothing has changed
        bool Snapshot = false;
        /// The states of all presets instead of those that changed, for who does not take them one by one.
        std::optional<std::vector<PieceBytes>> AllStates;
    };
    /// What a console has said that it has and understands.
    struct Wishes {
        bool StateChanges = true;  ///< otherwise a change of one preset state brings them all, in one piece
        std::uint64_t KnownRun = 0;
        std::uint64_t KnownRevision = 0;
        std::string Address = {};  ///< where it is; see Expect
    };
    static constexpr std::size_t MaxSubscribers = 256;

    /// Throws Fault Refused when there are too many subscribers already.
    explicit Subscription(Feed& feed) : Subscription(feed, Wishes()) {}
    Subscription(Feed& feed, const Wishes& wishes);
    ~Subscription();
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    /// The snapshot at the first call (or what changed since the known revision, when that is still known), then
    /// everything that changed since the last one, waiting for a change no longer than the limit. Where there are many
    /// subscribers it waits a moment before, unless this one expects something. Nothing when the subscription is over.
    std::optional<Batch> Next(std::chrono::milliseconds limit);

private:
    friend class Feed;
    bool CanResume(const Wishes& wishes) const;
    void End();
    Batch TakeSnapshot();
    Batch TakeChanges();
    std::vector<PieceBytes> AllStates() const;

    Feed& Source;
    const bool StateChanges;
    const std::string Address;
    std::condition_variable Hurry;              ///< with the feed's mutex, which guards what follows
    std::chrono::steady_clock::time_point Due;  ///< not before, unless it expects something
    std::uint64_t Expected = 0;
    std::uint64_t Sent = 0;
    bool Started = false;  ///< has the state of the revision sent
    bool Over = false;
};

}  // namespace ZorvicUnit
