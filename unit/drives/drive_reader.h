#pragma once

#include "drives/drive_table.h"
#include "fault.h"
#include "files/directory_listing.h"
#include "files/tree_walk.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ZorvicUnit {

/// A regular file to copy from, with all links followed.
struct SourceFile {
    std::filesystem::path File;
    FileStamp Stamp;
};

/// Reads one drive in a thread of its own, so that a drive that hangs or has to spin up first holds nobody for longer
/// than Patience. Safe to call from every thread.
class DriveReader {
public:
    static constexpr std::chrono::milliseconds Patience{120};
    /// How long a listing that came too late waits for the question to be asked again.
    static constexpr std::chrono::seconds Freshness{5};

    using Lister = std::function<std::vector<zorvic::v1::DirectoryEntry>(const DrivePlace&)>;
    explicit DriveReader(DriveRoot drive, Lister lister = &ListDirectoryNow);
    /// A thread that hangs in the drive is left behind rather than waited for.
    ~DriveReader();
    DriveReader(const DriveReader&) = delete;
    DriveReader& operator=(const DriveReader&) = delete;

    /// What the lister gives or throws. Slow: goes on and answers a later call.
    std::vector<zorvic::v1::DirectoryEntry> List(const std::vector<std::string>& names);

    /// NotFound, Refused (leads out of the drive), Slow. A console asks for many files in a row: when the drive was
    /// too slow for one, the next are refused at once until it has answered.
    SourceFile FindFile(const std::vector<std::string>& names);

    /// Sizes; those last read when the drive is slow, 0 before the first answer.
    zorvic::v1::Drive Space();

private:
    struct Listing {
        std::vector<zorvic::v1::DirectoryEntry> Entries;
        std::chrono::steady_clock::time_point Finished;
    };
    /// A failure travels as what it says: exceptions are counted in a library that the thread sanitizer cannot see
    /// into.
    template <typename T>
    struct Outcome {
        std::optional<T> Value;
        FaultKind Kind = FaultKind::Internal;
        std::string Problem;

        const T& Get() const { return Value ? *Value : throw Fault(Kind, Problem); }
    };
    template <typename T>
    using Answer = std::shared_future<Outcome<T>>;
    struct State;

    static void Run(const std::shared_ptr<State>& shared);
    static zorvic::v1::Drive ReadSpace(const DriveRoot& drive);
    template <typename T>
    Answer<T> Ask(std::function<T(const DriveRoot&)> question);
    Answer<Listing> AskOrFind(const std::vector<std::string>& names);

    const std::shared_ptr<State> Shared;  ///< the thread's too, which may outlive the reader
    const Lister ListEntries;
    std::thread Thread;
    std::mutex Lock;  ///< guards all below
    std::map<std::vector<std::string>, Answer<Listing>> Listings;
    Answer<SourceFile> LateFile;  ///< the last that came too late
    Answer<zorvic::v1::Drive> NextSpace;
    zorvic::v1::Drive LastSpace;
};

}  // namespace ZorvicUnit
