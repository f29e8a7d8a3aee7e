#include "door/door.h"

#include "thread_name.h"

#include <poll.h>
#include <spdlog/spdlog.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace ZorvicUnit {

using std::chrono::milliseconds;

namespace {

// What a flood does until it is noticed is lost time for the others.
constexpr milliseconds LookPeriod(25);
// For the first word, and for a place. From then on, it is the server's business, which has the same limit.
constexpr milliseconds FirstWordLimit(3'000);
constexpr milliseconds LongestUnexamined(2'000);
constexpr milliseconds DisgraceTime(10'000);
// What is examined at every look: floods, not the small change of a watching console.
constexpr std::uint64_t NoticedBytes = 4096;
constexpr milliseconds FailurePause(5);
constexpr int MostAtOnce = 64;
constexpr std::size_t MostReservedDescriptors = 192;

// Drops the connection with all that has come on it: after an ordinary end the server would still read it.
void CutOff(int socket) {
    const sockaddr nobody{.sa_family = AF_UNSPEC, .sa_data = {}};
    connect(socket, &nobody, sizeof nobody);
}

// An event may be one of an earlier owner of the number.
bool IsOver(int socket) {
    pollfd state{.fd = socket, .events = 0, .revents = 0};
    return poll(&state, 1, 0) != 0;
}

}  // namespace

DoorLimits DoorLimits::ForThisProcess() {
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const std::size_t all = descriptors.rlim_cur;
    DoorLimits limits;
    limits.Connections = std::min(limits.Connections, (all - std::min(all / 2, MostReservedDescriptors)) / 3);
    limits.Waiting = std::min(limits.Waiting, limits.Connections);
    limits.PerHost = limits.Connections - limits.Connections / 8;
    return limits;
}

Door::Door(ListeningSocket& socket, DoorLimits limits, Usher::Hand hand)
    : Listening(socket),
      Limits(limits),
      ToServer(std::move(hand)),
      Poll(epoll_create1(EPOLL_CLOEXEC)),
      Wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    AddToPoll(Listening.Get(), EPOLLIN);
    AddToPoll(Wake.Get(), EPOLLIN);
    Thread = std::thread([this] { Run(); });
}

Door::~Door() {
    Stopping = true;
    eventfd_write(Wake.Get(), 1);
    Thread.join();
}

void Door::Run() {
    NameThread("door");
    while (!Stopping) {
        Await();
        const auto now = std::chrono::steady_clock::now();
        if (now - LastLook >= LookPeriod) Look(now);
    }
}

void Door::Await() {
    std::array<epoll_event, MostAtOnce> events{};
    const int limit = All.empty() ? -1 : static_cast<int>(LookPeriod.count());
    const int count = epoll_wait(Poll.Get(), events.data(), MostAtOnce, limit);
    const auto now = std::chrono::steady_clock::now();
    for (int number = 0; number < count; ++number) {
        const int socket = events.at(static_cast<std::size_t>(number)).data.fd;
        if (socket == Listening.Get()) {
            AcceptAll(now);
        } else {
            OnReady(socket, now);
        }
    }
    ServeReady(now);
}

void Door::AcceptAll(TimePoint now) {
    int number = 0;
    for (; number < MostAtOnce; ++number) {
        auto arrival = Listening.Accept();
        if (arrival.Turned) {
            MakeRoom({}, Shortage::NoPlace, now);
            if (Lines.Take(now)) spdlog::warn("turned a connection away: there are no descriptors left");
        } else if (arrival.Socket.IsOpen()) {
            Receive(std::move(arrival.Socket), now);
        } else {
            break;
        }
    }
    // Somebody is there and cannot be accepted: without a pause the thread would ask again and again.
    if (number == 0) std::this_thread::sleep_for(FailurePause);
}

void Door::Receive(Descriptor socket, TimePoint now) {
    auto who = PeerOfSocket(socket.Get());
    if (!who || !AddToPoll(socket.Get(), EPOLLIN | EPOLLONESHOT)) return;
    if (Waiting.Count() >= Limits.Waiting) {
        const auto first = Waiting.WhoStopsWaiting(who->Host);
        if (!first) return TurnAway(*who, now);
        Forget(All.find(*first));
    }
    const int number = socket.Get();
    Waiting.Add(number, who->Host, now);
    Guest guest;
    guest.Socket = std::move(socket);
    guest.Who = std::move(*who);
    guest.Since = now;
    All.insert_or_assign(number, std::move(guest));
}

void Door::TurnAway(const Peer& who, TimePoint now) {
    if (Lines.Take(now)) spdlog::warn("turned {} away: there are too many connections", who.Name);
}

// A connection that the server has closed is shut down in both directions, and so ready here as well.
void Door::OnReady(int socket, TimePoint now) {
    const auto found = All.find(socket);
    if (found == All.end()) return;
    if (!found->second.Served) {
        found->second.Ready = true;
        Waiting.SetStanding(socket, Standing::Asks, now);
    } else if (IsOver(socket)) {
        Forget(found);
    }
}

// The hosts in turn, those first that have the fewest places.
void Door::ServeReady(TimePoint now) {
    std::vector<std::pair<TimePoint, int>> ready;
    for (const auto& [socket, guest] : All)
        if (guest.Ready && !guest.Served) ready.emplace_back(guest.Since, socket);
    std::ranges::sort(ready);
    std::map<std::string, std::size_t> turns;
    std::multimap<std::size_t, int> order;
    for (const auto& [since, socket] : ready) {
        const std::string& host = All.at(socket).Who.Host;
        const auto turn = turns.try_emplace(host, Inside.CountIdle(host)).first;
        order.emplace(turn->second++, socket);
    }
    for (const auto& [turn, socket] : order) {
        const auto found = All.find(socket);
        if (MustWait(found->second, now)) continue;
        Guest guest = std::move(found->second);
        Forget(found);
        Serve(std::move(guest), now);
    }
}

// Consoles wait for an answer before they go on. A flood has sent all it could before it is let in, and of a host in
// disgrace it is not let in at all: what it brings would have to be read before anybody else's turn.
bool Door::Presses(const Guest& guest) const {
    int unread = 0;
    return Disgraced.contains(guest.Who.Host) && ioctl(guest.Socket.Get(), FIONREAD, &unread) == 0 &&
           unread > static_cast<int>(NoticedBytes);
}

bool Door::MustWait(const Guest& guest, TimePoint now) {
    const auto host = Disgraced.find(guest.Who.Host);
    if (host != Disgraced.end() && (Presses(guest) || !host->second.Entries.Allows(now))) return true;
    while (const auto shortage = ShortageFor(guest.Who.Host))
        if (!MakeRoom(guest.Who.Host, *shortage, now)) return true;
    return false;
}

std::optional<Shortage> Door::ShortageFor(const std::string& host) const {
    if (Inside.CountOf(Standing::Arriving) >= Limits.Arriving) return Shortage::TooManyArrive;
    if (Inside.CountOf(host) >= Limits.PerHost) return Shortage::HostHasItsShare;
    return Inside.Count() >= Limits.Connections ? std::optional(Shortage::NoPlace) : std::nullopt;
}

void Door::Serve(Guest guest, TimePoint now) {
    const auto host = Disgraced.find(guest.Who.Host);
    if (host != Disgraced.end()) host->second.Entries.Take(now);
    Descriptor kept = guest.Socket.Duplicate();
    if (!kept.IsOpen()) return;
    epoll_ctl(Poll.Get(), EPOLL_CTL_DEL, guest.Socket.Get(), nullptr);
    const int number = kept.Get();
    if (!AddToPoll(number, 0)) return;
    ToServer.Bring(std::move(guest.Socket));
    guest.Socket = std::move(kept);
    guest.Served = true;
    guest.Behaviour = Conduct(host != Disgraced.end());
    guest.Since = guest.Examined = now;
    Inside.Add(number, guest.Who.Host, now);
    All.insert_or_assign(number, std::move(guest));
}

// Who seems to go first is looked at once more: the last time may be two seconds ago.
bool Door::MakeRoom(const std::string& host, Shortage shortage, TimePoint now) {
    while (const auto first = Inside.WhoMakesRoom(host, shortage, now)) {
        const auto found = All.find(*first);
        Guest& guest = found->second;
        const Standing before = Inside.StandingOf(*first);
        const char* reason = guest.Counter ? Read(guest, BytesReceived(*first), now) : nullptr;
        if (!reason && Inside.StandingOf(*first) > before) continue;
        if (reason) ShowOut(guest, reason);
        shutdown(*first, SHUT_RDWR);
        Forget(found);
        return true;
    }
    return false;
}

void Door::Look(TimePoint now) {
    LastLook = now;
    std::erase_if(Disgraced, [&](const auto& entry) { return now - entry.second.Since > DisgraceTime; });
    ServeReady(now);
    FindCounters();
    for (auto entry = All.begin(); entry != All.end();) {
        Guest& guest = entry->second;
        const bool late = !guest.Served && now - guest.Since > FirstWordLimit;
        if (late && Presses(guest)) Disgraced[guest.Who.Host].Since = now;
        if (late && guest.Ready) TurnAway(guest.Who, now);
        const char* reason = guest.Served ? Examine(guest, now) : nullptr;
        if (reason) ShowOut(guest, reason);
        entry = late || reason ? Forget(entry) : std::next(entry);
    }
}

void Door::FindCounters() {
    const auto unknown = [](const auto& entry) { return entry.second.Served && !entry.second.Counter; };
    if (std::ranges::none_of(All, unknown)) return;
    const auto counters = ListTrafficCounters();
    for (auto& [number, guest] : All) {
        const auto found = counters.find(guest.Who.Name);
        if (guest.Served && !guest.Counter && found != counters.end()) guest.Counter = found->second;
    }
}

const char* Door::Examine(Guest& guest, TimePoint now) {
    if (!guest.Counter) return nullptr;
    const std::uint64_t bytes = BytesReceived(guest.Socket.Get());
    const bool first = guest.Seen.BytesReceived == 0;
    if (!first && bytes - guest.Seen.BytesReceived < NoticedBytes && now - guest.Examined < LongestUnexamined)
        return nullptr;
    return Read(guest, bytes, now);
}

const char* Door::Read(Guest& guest, std::uint64_t bytes, TimePoint now) {
    auto traffic = ReadTraffic(*guest.Counter);
    if (!traffic) return nullptr;
    traffic->BytesReceived = bytes;
    guest.Seen = *traffic;
    guest.Examined = now;
    const char* reason = guest.Behaviour.Judge(*traffic, now);
    const Standing asked = traffic->Started > 0 ? Standing::Asks : Standing::Mute;
    Inside.SetStanding(guest.Socket.Get(), guest.Behaviour.Listens(now) ? Standing::Watches : asked, now);
    return reason;
}

void Door::ShowOut(const Guest& guest, const char* reason) {
    if (Lines.Take(LastLook)) spdlog::warn("closed the connection of {}: {}", guest.Who.Name, reason);
    CutOff(guest.Socket.Get());
    Disgraced[guest.Who.Host].Since = LastLook;
}

std::map<int, Door::Guest>::iterator Door::Forget(std::map<int, Guest>::iterator guest) {
    (guest->second.Served ? Inside : Waiting).Remove(guest->first);
    return All.erase(guest);
}

bool Door::AddToPoll(int socket, std::uint32_t events) {
    epoll_event event{.events = events, .data = {.fd = socket}};
    return epoll_ctl(Poll.Get(), EPOLL_CTL_ADD, socket, &event) == 0;
}

}  // namespace ZorvicUnit
