#include "render/pictures/picture_reader.h"

#include "render/pictures/picture_converter.h"
#include "thread_name.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace ZorvicRender {

using ZorvicUnit::AvFrame;

namespace {

constexpr std::size_t LeastDepth = 3;
constexpr std::size_t MostDepth = 16;
constexpr Nanoseconds Forever = Nanoseconds::max();

bool Stands(const Picture& picture, Nanoseconds position) {
    return picture.From <= position && position < picture.Until;
}

}  // namespace

std::size_t PictureBudget::Depth(PixelSize size) const {
    const auto bytes = static_cast<std::size_t>(size.Width) * static_cast<std::size_t>(size.Height) * 4;
    const auto readers = static_cast<std::size_t>(std::max(Readers.load(), 1));
    return std::clamp(Bytes / readers / std::max<std::size_t>(bytes, 1), LeastDepth, MostDepth);
}

PictureReader::PictureReader(std::shared_ptr<KeptFile> file, PictureBudget& budget)
    : File(std::move(file)), Budget(budget), Thread([this] { Run(); }) {
    Budget.Join();
}

PictureReader::~PictureReader() {
    Stop = true;
    {
        const std::scoped_lock lock(Lock);
        Wake.notify_all();
    }
    Thread.join();
    Budget.Leave();
}

void PictureReader::Start(Nanoseconds position) {
    const std::scoped_lock lock(Lock);
    ++Wish;
    Queue.clear();
    FrontChosen = false;
    Resting = false;
    Wanted = position;
    Wake.notify_all();
}

void PictureReader::Rest() {
    const std::scoped_lock lock(Lock);
    ++Wish;
    Queue.clear();
    Resting = true;
    Wake.notify_all();
}

void PictureReader::SetSize(PixelSize size) {
    const std::scoped_lock lock(Lock);
    Drawn = size;
}

PictureReader::Choice PictureReader::Choose(Nanoseconds position) {
    const std::scoped_lock lock(Lock);
    Choice choice;
    Wanted = std::max(Wanted, position);
    while (Queue.size() > 1 && Queue[1]->From <= position) {
        if (!std::exchange(FrontChosen, false)) ++choice.Passed;
        Queue.pop_front();
    }
    Wake.notify_all();
    if (Queue.empty()) return choice;
    FrontChosen = true;
    choice.Shown = Queue.front();
    choice.Exact = Stands(*choice.Shown, position);
    return choice;
}

bool PictureReader::Holds(Nanoseconds position) {
    const std::scoped_lock lock(Lock);
    while (Queue.size() > 1 && Queue[1]->From <= position) {
        Queue.pop_front();
        FrontChosen = false;
    }
    if (!Resting) Wanted = std::max(Wanted, position);
    Wake.notify_all();
    return !Queue.empty() && Stands(*Queue.front(), position);
}

bool PictureReader::IsAt(Nanoseconds position) const {
    const std::scoped_lock lock(Lock);
    return !Resting && Wanted == position;
}

bool PictureReader::Contains(Nanoseconds position) const {
    const std::scoped_lock lock(Lock);
    return !Queue.empty() && Queue.front()->From <= position && position < Queue.back()->Until;
}

std::string PictureReader::TakeProblem() {
    const std::scoped_lock lock(Lock);
    return std::exchange(Problem, {});
}

void PictureReader::Run() {
    // It works ahead; drawing what is due comes first.
    ZorvicUnit::NameThread("zr-pictures", ZorvicUnit::Manners::Modest);
    try {
        DecodeAll();
    } catch (const std::exception& error) {
        const std::scoped_lock lock(Lock);
        if (!Stop) Problem = error.what();
        Failed = true;
    }
    Opening.reset();
}

void PictureReader::DecodeAll() {
    Opening.emplace(*File);
    PictureDecoder decoder(File->Open(), File->Path, Stop);
    PictureConverter converter;
    std::unique_lock lock(Lock);
    while (!Stop) {
        Wake.wait(lock, [this] { return Stop || (!Resting && Serving != Wish); });
        if (Stop) return;
        Serving = Wish;
        const Nanoseconds target = Wanted;
        lock.unlock();
        decoder.SeekBefore(target);
        DecodeStretch(decoder, converter, target);
        lock.lock();
    }
}

// A picture's end is its successor's begin, so that each waits for the next one to be decoded; but not the first one
// when it is clear that it is wanted.
void PictureReader::DecodeStretch(PictureDecoder& decoder, PictureConverter& converter, Nanoseconds target) {
    AvFrame pending;
    bool first = true;
    for (;;) {
        AvFrame next = decoder.Next();
        if (pending) {
            const Nanoseconds until = next ? decoder.PositionOf(*next) : Forever;
            const Offered offered = Offer(decoder, converter, *pending, first ? target : Forever, until);
            if (offered == Offered::Unwanted) return;
            if (offered == Offered::Queued) first = false;
        }
        if (!next) break;
        const Nanoseconds end = decoder.PositionOf(*next) + decoder.LengthOf(*next);
        if (first && !pending && decoder.PositionOf(*next) <= target && target < end) {
            if (Offer(decoder, converter, *next, target, end) == Offered::Unwanted) return;
            first = false;
            continue;
        }
        pending = std::move(next);
    }
    Opening->Done();
    const std::scoped_lock lock(Lock);
    if (!pending && Queue.empty() && Serving == Wish && !Stop) Failed = true;
}

// The first picture of a stretch also stands for the time before it: sound may begin earlier, an index may lie.
PictureReader::Offered PictureReader::Offer(PictureDecoder& decoder, PictureConverter& converter, const AVFrame& frame,
                                            Nanoseconds latestFrom, Nanoseconds until) {
    const int turns = decoder.Turns();
    PixelSize size;
    {
        std::unique_lock lock(Lock);
        size = SizeFor(frame, turns);
        const std::size_t depth = Budget.Depth(size);
        Wake.wait(lock, [&] { return Stop || Serving != Wish || Queue.size() < depth; });
        if (Stop || Serving != Wish) return Offered::Unwanted;
        if (until <= Wanted) return Offered::Passed;
    }
    // The first pictures are where a broken file breaks a decoder.
    Opening->Done();
    const auto picture = converter.Convert(frame, size);
    if (!picture) return Offered::Passed;
    picture->From = std::min(decoder.PositionOf(frame), latestFrom);
    picture->Until = until;
    picture->Turns = turns;
    const std::scoped_lock lock(Lock);
    if (Serving != Wish) return Offered::Unwanted;
    Queue.push_back(picture);
    return Offered::Queued;
}

PixelSize PictureReader::SizeFor(const AVFrame& frame, int turns) const {
    PixelSize wanted = Drawn;
    if (turns % 2 != 0) std::swap(wanted.Width, wanted.Height);
    return {std::clamp(wanted.Width, 1, frame.width), std::clamp(wanted.Height, 1, frame.height)};
}

}  // namespace ZorvicRender
