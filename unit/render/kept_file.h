#pragma once

#include "files/descriptor.h"

#include <mutex>
#include <optional>
#include <string>

namespace ZorvicRender {

/// A file as it was when it was first opened: one that is replaced on disk while a run plays it stays the same file for
/// all readers of that run. Safe from any thread.
class KeptFile {
public:
    explicit KeptFile(std::string path) : Path(std::move(path)) {}

    /// A duplicate of the one descriptor. Throws Fault when the file cannot be opened.
    ZorvicUnit::Descriptor Open();

    const std::string Path;

private:
    std::mutex Lock;  ///< guards Kept
    std::optional<ZorvicUnit::Descriptor> Kept;
};

}  // namespace ZorvicRender
