#pragma once

#include <QString>

#include <cstdint>
#include <deque>
#include <utility>

/// How fast an import goes, over the last seconds.
class ImportRate {
public:
    void Restart() { Samples.clear(); }
    /// How many bytes were there at a time of a clock that only goes forward.
    void Note(std::int64_t bytes, std::int64_t atMS);
    /// 0 until it can be told, and while nothing comes.
    std::int64_t BytesPerSecond() const;

private:
    std::deque<std::pair<std::int64_t, std::int64_t>> Samples;  ///< time, bytes
};

/// What an import has done and has to do.
struct ImportSums {
    int Files = 0;
    int FilesDone = 0;
    std::int64_t Total = 0;    ///< bytes
    std::int64_t Current = 0;  ///< bytes
};

/// "2 of 5 files, 512.00MiB of 1.50GiB, 80.00MiB/s, 00:00:13 left"
QString ImportText(const ImportSums& sums, std::int64_t bytesPerSecond);
