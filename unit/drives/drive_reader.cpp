#include "drives/drive_reader.h"

#include "fault.h"
#include "thread_name.h"

#include <sys/statvfs.h>

#include <condition_variable>
#include <deque>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::size_t MostQuestions = 16;
constexpr std::chrono::milliseconds Farewell{300};

template <typename T>
bool IsReady(const std::shared_future<T>& answer, std::chrono::milliseconds limit = {}) {
    return answer.valid() && answer.wait_for(limit) == std::future_status::ready;
}

}  // namespace

/// What reader and thread share.
struct DriveReader::State {
    const DriveRoot Drive;
    std::mutex Lock;  ///< guards all below
    std::condition_variable Wake;
    std::deque<std::function<void()>> Questions;
    bool Stop = false;
    bool Ended = false;
};

DriveReader::DriveReader(DriveRoot drive, Lister lister)
    : Shared(new State{std::move(drive), {}, {}, {}}),
      ListEntries(std::move(lister)),
      Thread([shared = Shared] { Run(shared); }) {}

DriveReader::~DriveReader() {
    std::unique_lock lock(Shared->Lock);
    Shared->Stop = true;
    Shared->Questions.clear();
    Shared->Wake.notify_all();
    const bool ended = Shared->Wake.wait_for(lock, Farewell, [this] { return Shared->Ended; });
    lock.unlock();
    if (ended) {
        Thread.join();
    } else {
        Thread.detach();
    }
}

void DriveReader::Run(const std::shared_ptr<State>& shared) {
    NameThread("zu-drive-" + shared->Drive.Letter, Manners::Modest);
    std::unique_lock lock(shared->Lock);
    while (true) {
        shared->Wake.wait(lock, [&] { return shared->Stop || !shared->Questions.empty(); });
        if (shared->Stop) break;
        const auto question = std::move(shared->Questions.front());
        shared->Questions.pop_front();
        lock.unlock();
        question();
        lock.lock();
    }
    shared->Ended = true;
    shared->Wake.notify_all();
}

template <typename T>
DriveReader::Answer<T> DriveReader::Ask(std::function<T(const DriveRoot&)> question) {
    // The thread may outlive the reader: it gets copies, and the state stays as long as its thread.
    const auto task = std::make_shared<std::packaged_task<Outcome<T>()>>(
        [question = std::move(question), drive = Shared->Drive]() -> Outcome<T> {
            try {
                return {question(drive), {}, {}};
            } catch (const Fault& fault) {
                return {std::nullopt, fault.Kind, fault.what()};
            } catch (const std::exception& error) {
                return {std::nullopt, FaultKind::Internal, error.what()};
            }
        });
    Answer<T> answer = task->get_future().share();
    const std::scoped_lock lock(Shared->Lock);
    if (Shared->Questions.size() >= MostQuestions)
        throw Fault(FaultKind::Slow, "drive " + Shared->Drive.Letter + " does not answer");
    Shared->Questions.emplace_back([task] { (*task)(); });
    Shared->Wake.notify_all();
    return answer;
}

DriveReader::Answer<DriveReader::Listing> DriveReader::AskOrFind(const std::vector<std::string>& names) {
    const std::scoped_lock lock(Lock);
    std::erase_if(Listings, [oldest = std::chrono::steady_clock::now() - Freshness](const auto& known) {
        if (!IsReady(known.second)) return false;
        const auto& listing = known.second.get().Value;
        return !listing || listing->Finished < oldest;
    });
    if (const auto known = Listings.find(names); known != Listings.end()) return known->second;
    auto listing = Ask<Listing>([names, list = ListEntries](const DriveRoot& drive) {
        auto entries = list({&drive, names});
        return Listing{std::move(entries), std::chrono::steady_clock::now()};
    });
    return Listings.emplace(names, std::move(listing)).first->second;
}

std::vector<zorvic::v1::DirectoryEntry> DriveReader::List(const std::vector<std::string>& names) {
    const auto listing = AskOrFind(names);
    if (!IsReady(listing, Patience)) throw Fault(FaultKind::Slow, "drive " + Shared->Drive.Letter + " is slow");
    const std::scoped_lock lock(Lock);
    Listings.erase(names);
    return listing.get().Get().Entries;
}

SourceFile DriveReader::FindFile(const std::vector<std::string>& names) {
    {
        const std::scoped_lock lock(Lock);
        if (LateFile.valid() && !IsReady(LateFile))
            throw Fault(FaultKind::Slow, "drive " + Shared->Drive.Letter + " does not answer");
    }
    const auto found = Ask<SourceFile>([names](const DriveRoot& drive) {
        const auto file = ResolveOnDrive({&drive, names});
        return SourceFile{file, ReadStamp(file)};
    });
    if (!IsReady(found, Patience)) {
        const std::scoped_lock lock(Lock);
        LateFile = found;
        throw Fault(FaultKind::Slow, "drive " + Shared->Drive.Letter + " is slow");
    }
    return found.get().Get();
}

zorvic::v1::Drive DriveReader::ReadSpace(const DriveRoot& drive) {
    zorvic::v1::Drive space;
    space.set_mountpoint(drive.Letter);
    space.set_external(drive.External);
    struct statvfs figures = {};
    if (statvfs(drive.Directory.c_str(), &figures) != 0) return space;
    const auto block = static_cast<std::int64_t>(figures.f_frsize);
    space.set_total(block * static_cast<std::int64_t>(figures.f_blocks));
    space.set_used(block * static_cast<std::int64_t>(figures.f_blocks - figures.f_bfree));
    space.set_free(block * static_cast<std::int64_t>(figures.f_bavail));
    return space;
}

zorvic::v1::Drive DriveReader::Space() {
    std::unique_lock lock(Lock);
    LastSpace.set_mountpoint(Shared->Drive.Letter);
    LastSpace.set_external(Shared->Drive.External);
    // A drive that hangs is waited for once, not at every call.
    const bool isNew = !NextSpace.valid();
    try {
        if (isNew) NextSpace = Ask<zorvic::v1::Drive>(&ReadSpace);
    } catch (const Fault&) {
        return LastSpace;
    }
    const auto answer = NextSpace;
    lock.unlock();
    const bool ready = IsReady(answer, isNew ? Patience : std::chrono::milliseconds(0));
    lock.lock();
    if (ready) {
        LastSpace = answer.get().Get();
        NextSpace = {};
    }
    return LastSpace;
}

}  // namespace ZorvicUnit
