#pragma once

#include "files/descriptor.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace ZorvicRender {

/// A file as it was when it was first opened: one that is replaced on disk while a run plays it stays the same file for
/// all readers of that run, of pictures and of sound. Safe from any thread.
class KeptFile {
public:
    /// Says that a reader begins to open the file (false), and that it has decoded something of it without harm (true);
    /// from the readers' threads.
    using Report = std::function<void(const std::string& path, bool done)>;

    KeptFile(std::string path, std::string file, Report report = {})
        : Path(std::move(path)), File(std::move(file)), Opening(std::move(report)) {}

    /// A duplicate of the one descriptor. Throws Fault when the file cannot be opened.
    ZorvicUnit::Descriptor Open();
    /// False when it was opened and another file, or none, has its name by now.
    bool IsCurrent() const;

    /// Reports the opening by one reader: begun as this is made, done as told or when this ends.
    class Watch {
    public:
        explicit Watch(const KeptFile& file) : Source(file) { Tell(false); }
        ~Watch() { Done(); }
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        void Done() {
            if (!std::exchange(Told, true)) Tell(true);
        }

    private:
        void Tell(bool done) const {
            if (Source.Opening) Source.Opening(Source.Path, done);
        }
        const KeptFile& Source;
        bool Told = false;
    };

    const std::string Path;  ///< as the preset names it

private:
    const std::string File;
    const Report Opening;
    mutable std::mutex Lock;  ///< guards Kept
    std::optional<ZorvicUnit::Descriptor> Kept;
};

}  // namespace ZorvicRender
