#pragma once

#include "render/kept_file.h"
#include "render/pictures/picture.h"
#include "render/pictures/picture_decoder.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace ZorvicRender {

class PictureConverter;

/// How many bytes of decoded pictures all readers together may hold.
class PictureBudget {
public:
    explicit PictureBudget(std::size_t bytes) : Bytes(bytes) {}
    void Join() { ++Readers; }
    void Leave() { --Readers; }
    /// For one reader, in pictures of this size.
    std::size_t Depth(PixelSize size) const;

private:
    const std::size_t Bytes;
    std::atomic<int> Readers = 0;
};

/// Decodes the pictures of one file ahead of their time, in a thread of its own. The rest is for one thread.
class PictureReader {
public:
    PictureReader(std::shared_ptr<KeptFile> file, PictureBudget& budget);
    /// Waits for the picture that is being decoded.
    ~PictureReader();
    PictureReader(const PictureReader&) = delete;
    PictureReader& operator=(const PictureReader&) = delete;

    /// Drops what was decoded and goes to this position.
    void Start(Nanoseconds position);
    /// Drops what was decoded and rests.
    void Rest();
    /// Of pictures from the next one on; never more than the file's own.
    void SetSize(PixelSize size);

    struct Choice {
        PicturePtr Shown;    ///< null while nothing is decoded
        bool Exact = false;  ///< it stands at the position that was asked for
        int Passed = 0;      ///< pictures that were dropped without having been chosen
    };
    /// The picture that stands at this position or the last one before it, dropping the ones before.
    Choice Choose(Nanoseconds position);
    /// True when Choose() would give an exact one; drops nothing that it would give, and makes a reader that was
    /// started behind a moving clock run after it.
    bool Holds(Nanoseconds position);
    /// True while nothing beyond this position, where it was started, has been asked for.
    bool IsAt(Nanoseconds position) const;
    /// True when it has the picture of this position; changes nothing.
    bool Contains(Nanoseconds position) const;
    /// True when the file has nothing to show.
    bool HasFailed() const { return Failed; }
    /// The reason, once.
    std::string TakeProblem();

private:
    void Run();
    void DecodeAll();
    void DecodeStretch(PictureDecoder& decoder, PictureConverter& converter, Nanoseconds target);
    enum class Offered { Queued, Passed, Unwanted };
    Offered Offer(PictureDecoder& decoder, PictureConverter& converter, const AVFrame& frame, Nanoseconds latestFrom,
                  Nanoseconds until);
    PixelSize SizeFor(const AVFrame& frame, int turns) const;

    const std::shared_ptr<KeptFile> File;
    PictureBudget& Budget;
    std::atomic<bool> Stop = false;
    std::atomic<bool> Failed = false;
    std::optional<KeptFile::Watch> Opening;  ///< of the thread only

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable Wake;
    std::deque<PicturePtr> Queue;
    bool FrontChosen = false;
    std::uint64_t Wish = 0;  ///< counts Start() and Rest()
    std::uint64_t Serving = 0;
    bool Resting = true;
    Nanoseconds Wanted{0};  ///< nothing that ends before is worth converting
    PixelSize Drawn{1, 1};
    std::string Problem;

    std::thread Thread;
};

}  // namespace ZorvicRender
