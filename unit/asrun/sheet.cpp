#include "asrun/sheet.h"

#include "fault.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>
#include <zorvic/asrun.h>

#include <fstream>
#include <iterator>
#include <utility>

namespace ZorvicUnit {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;
using zorvic::v1::AsRunEntry;

namespace {

// A kill costs the last second at most: this, and the time of a commit.
constexpr milliseconds CommitPeriod(700);
// How exactly the sheet knows when a unit that did nothing was ended.
constexpr std::chrono::seconds AlivePeriod(10);
constexpr milliseconds ClockStep(500);
constexpr milliseconds ReadingTime(10);
constexpr std::uint64_t GapNumber = 1;

microseconds Since(steady_clock::time_point time) {
    return duration_cast<microseconds>(time.time_since_epoch());
}

microseconds WallNow() {
    return duration_cast<microseconds>(system_clock::now().time_since_epoch());
}

std::string BootName() {
    std::string name;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), name);
    return name;
}

void Stamp(AsRunEntry& entry, steady_clock::time_point at) {
    entry.set_monotonic_us(Since(at).count());
    entry.set_wall_us((WallNow() - Since(steady_clock::now()) + Since(at)).count());
}

AsRunEntry Plain(Zorvic::AsRunKind kind, const std::string& text) {
    AsRunEntry entry;
    entry.set_kind(kind);
    entry.set_text(text);
    return entry;
}

}  // namespace

Sheet::Sheet(std::filesystem::path file, SheetLimits limits)
    : Keeps(limits.Bytes > 0), File(std::move(file), limits), Boot(BootName()) {
    if (!Keeps) return;
    Open();
    Writer = std::thread([this] { Run(); });
}

Sheet::~Sheet() {
    Close();
}

void Sheet::Close() {
    EndReading();
    if (!Writer.joinable()) return;
    {
        const std::scoped_lock lock(Lock);
        Stop = true;
        Wake.notify_one();
    }
    Writer.join();
}

void Sheet::EndReading() {
    const std::scoped_lock lock(Lock);
    ReadingOver = true;
    Written.notify_all();
}

void Sheet::Record(AsRunEntry& entry, std::optional<Clock::TimePoint> at) {
    const std::scoped_lock lock(Lock);
    if (!Keeps || Stop) return;
    NoteClock();
    Add(entry, at.value_or(steady_clock::now()));
}

void Sheet::Amend(const AsRunEntry& entry) {
    const std::scoped_lock lock(Lock);
    if (Keeps && !Stop && entry.number() != 0) Push(entry);
}

// Called with Lock held, as are the two below.
void Sheet::Add(AsRunEntry& entry, Clock::TimePoint at) {
    Stamp(entry, at);
    entry.set_boot(Boot);
    entry.set_number(++LastNumber);
    Push(entry);
}

void Sheet::Push(const AsRunEntry& entry) {
    if (Waiting.size() + BeingWritten >= MostWaiting) {
        ++Lost;
        return;
    }
    if (const auto lost = std::exchange(Lost, 0); lost > 0) {
        auto loss = Plain(Zorvic::ZORVIC_ASRUN_LOST, fmt::format("{} entries: the disk did not take them", lost));
        Add(loss, steady_clock::now());
    }
    Waiting.push_back(entry);
    if (Waiting.size() == 1) Wake.notify_one();
}

// A clock that is brought near the true time little by little is not set.
void Sheet::NoteClock() {
    const auto before = steady_clock::now();
    const microseconds offset = WallNow() - Since(before);
    // Kept from running between the two, this thread knows nothing.
    if (steady_clock::now() - before > ReadingTime) return;
    const auto last = std::exchange(ClockOffset, offset);
    if (!last || std::chrono::abs(offset - *last) < ClockStep) return;
    const std::chrono::duration<double> step = offset - *last;
    auto entry = Plain(Zorvic::ZORVIC_ASRUN_CLOCK, fmt::format("set by {:+.3f} s", step.count()));
    entry.set_from_us((WallNow() - (offset - *last)).count());
    Add(entry, steady_clock::now());
}

void Sheet::Open() {
    try {
        const auto alive = File.Open();
        if (!alive) return;
        auto gap = Plain(Zorvic::ZORVIC_ASRUN_GAP,
                         "the unit was ended without closing: what happened in its last second may be missing");
        gap.set_from_us(*alive);
        const std::scoped_lock lock(Lock);
        Stamp(gap, steady_clock::now());
        gap.set_number(GapNumber);
        gap.set_boot(Boot);
        Waiting.push_front(std::move(gap));
    } catch (const Fault& fault) {
        if (std::exchange(LastProblem, fault.what()) != fault.what())
            spdlog::warn("the as-run sheet cannot be kept: {}; trying again", fault.what());
    }
}

void Sheet::Run() {
    NameThread("zu-asrun");
    auto next = steady_clock::now();
    std::unique_lock lock(Lock);
    bool written = false;
    for (bool last = false; !last;) {
        Wake.wait_for(lock, AlivePeriod, [this] { return Stop || !Waiting.empty(); });
        Wake.wait_until(lock, next, [this] { return Stop; });
        last = Stop;
        NoteClock();
        next = steady_clock::now() + CommitPeriod;
        const SheetFile::Batch batch(Waiting.begin(), Waiting.end());
        Waiting.clear();
        BeingWritten = batch.size();
        lock.unlock();
        written = Write(batch);
        lock.lock();
        BeingWritten = 0;
        // Bounded by MostWaiting together with those that came meanwhile.
        if (!written) Waiting.insert(Waiting.begin(), batch.begin(), batch.end());
        ++Writes;
        Written.notify_all();
    }
    lock.unlock();
    if (written) CloseFile();
}

bool Sheet::Write(const SheetFile::Batch& batch) {
    if (!File.IsOpen()) Open();
    if (!File.IsOpen()) return false;
    try {
        File.Write(batch, WallNow().count());
        LastProblem.clear();
    } catch (const std::exception& error) {
        if (std::exchange(LastProblem, error.what()) != error.what())
            spdlog::warn("writing the as-run sheet: {}; trying again", error.what());
        return false;
    }
    const std::string trouble = File.TakeTrouble();
    if (trouble.empty()) return true;
    auto fault = Plain(Zorvic::ZORVIC_ASRUN_FAULT, trouble);
    Record(fault);
    return true;
}

// A sheet that has not all in it stays open, and the next start says so.
void Sheet::CloseFile() {
    try {
        File.Close(WallNow().count());
    } catch (const Fault& fault) {
        spdlog::warn("closing the as-run sheet: {}", fault.what());
    }
}

Sheet::Reader::Reader(Sheet& sheet, const zorvic::v1::AsRunRequest& request)
    : Source(sheet),
      Place{
          .Sheet = request.sheet(), .After = request.after(), .SinceUS = request.since_us(), .Limit = request.limit()} {
    const std::scoped_lock lock(Source.Lock);
    if (!Source.Keeps) throw Fault(FaultKind::Refused, "this unit keeps no as-run sheet");
    if (Source.Readers >= MaxReaders) throw Fault(FaultKind::Refused, "too many read the as-run sheet");
    ++Source.Readers;
}

Sheet::Reader::~Reader() {
    const std::scoped_lock lock(Source.Lock);
    --Source.Readers;
}

std::optional<zorvic::v1::AsRunEntries> Sheet::Reader::Next(milliseconds limit) {
    {
        std::unique_lock lock(Source.Lock);
        const auto anyNew = [this] { return Source.ReadingOver || Source.Writes != Seen; };
        if (CaughtUp) Source.Written.wait_for(lock, limit, anyNew);
        if (Source.ReadingOver) return std::nullopt;
        Seen = Source.Writes;
    }
    auto entries = Source.File.Read(Place);
    CaughtUp = entries.size() < SheetFile::PageSize;
    zorvic::v1::AsRunEntries message;
    message.mutable_entries()->Assign(std::make_move_iterator(entries.begin()), std::make_move_iterator(entries.end()));
    message.set_caught_up(CaughtUp);
    message.set_sheet(Place.Sheet);
    return message;
}

}  // namespace ZorvicUnit
