#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Width of the number's bars at the top of a measured clip: a white one, Bits of the number from the lowest, a black
/// one.
constexpr int NumberBits = 12;
constexpr int NumberBars = NumberBits + 2;
constexpr int NoNumber = -1;

/// Makes a clip whose pictures carry their number as bars at the top, with a beep of 20 ms at the start of each second.
void MakeNumberedClip(const std::string& file, const std::string& size, int seconds, const std::string& encoder);

/// Looks into a window about 300 times a second, past the program that draws it, and notes when the number at
/// its top changes.
class WindowWatch {
public:
    using Clock = std::chrono::steady_clock;
    struct Sight {
        Clock::time_point At;
        int Number = NoNumber;
    };

    /// Waits until a visible window's title begins so, moves it to this place and begins to watch.
    WindowWatch(const std::string& title, int x, int y);
    ~WindowWatch();

    /// What was seen since the last call; the first entry is what stood then.
    std::vector<Sight> Take();
    int Current() const { return Newest; }
    /// When the number was first seen after that moment; nothing when it did not come within the limit.
    std::optional<Clock::time_point> WaitFor(int number, Clock::time_point after, std::chrono::milliseconds limit);

private:
    void Run();

    const std::string Title;
    const int X;
    const int Y;
    std::atomic<int> Newest = NoNumber;
    std::atomic<bool> Ready = false;
    std::atomic<bool> Stop = false;
    std::mutex Lock;  ///< guards Sights
    std::vector<Sight> Sights;
    std::thread Thread;
};
