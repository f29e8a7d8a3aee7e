#pragma once

#include "asset_catalog.h"
#include "assets/media_process.h"
#include "fault.h"
#include "media/read_limit.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

namespace zorvic::media {
class Answer;
class Order;
}  // namespace zorvic::media

namespace ZorvicUnit {

/// A file cannot be read because of what it holds: not as long as it stays what it is.
class FileFault : public Fault {
public:
    FileFault(FaultKind kind, const std::string& text, bool broken) : Fault(kind, text), Broken(broken) {}
    const bool Broken;  ///< reading it crashed or took too long; otherwise it is no media
};

/// Has media files read by a process that can do no harm, whatever it makes of them. The process is started for the
/// first file, serves one file after the other, and ends some seconds after the last. Safe to call from several
/// threads.
class MediaReader {
public:
    enum class Turn {
        Next,  ///< before all that wait for Last
        Last,  ///< the limit counts from its turn: what is remembered of a file must not be the fault of others
    };

    MediaReader(std::filesystem::path program, Manners manners) : Process(std::move(program), manners) {}

    /// Both throw FileFault (Refused, or Slow when reading has not ended within the limit), or Fault: NotFound, Refused
    /// (a link, or no regular file), Slow (its turn did not come within the limit, or it was stopped), Internal (the
    /// process cannot be started, or the disk fails).
    zorvic::v1::AssetMetadata Probe(const std::filesystem::path& file, const ReadLimit& limit, Turn turn = Turn::Next);
    /// Nothing for a file without sound.
    std::optional<Envelope> ReadLevels(const std::filesystem::path& file, const ReadLimit& limit);

private:
    class Visit;
    zorvic::media::Answer Ask(const zorvic::media::Order& order, const std::filesystem::path& file,
                              const ReadLimit& limit, Turn turn);
    void MakeReady(const ReadLimit& limit);
    std::optional<zorvic::media::Answer> Exchange(const zorvic::media::Order& order, const Descriptor& file,
                                                  const ReadLimit& limit);
    std::optional<zorvic::media::Answer> Receive(const ReadLimit& limit) const;
    [[noreturn]] void GiveUp(const std::filesystem::path& file, const ReadLimit& limit);

    std::mutex Lock;  ///< guards the three below
    std::condition_variable Left;
    bool Busy = false;
    int Waiting = 0;  ///< those whose turn is Next

    // Of the thread whose turn it is.
    bool Ready = false;  ///< the process has greeted
    std::chrono::steady_clock::time_point Started;
    MediaProcess Process;
};

}  // namespace ZorvicUnit
