#include "windowwatch.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

using namespace std::chrono_literals;

// More often would take the display from the program that is watched.
constexpr auto LookPeriod = 3ms;

// The window of this title or one below the given one.
Window Find(Display* display, Window below, const std::string& title) {
    char* name = nullptr;
    const bool fits = XFetchName(display, below, &name) != 0 && name != nullptr && std::string(name).starts_with(title);
    if (name != nullptr) XFree(name);
    XWindowAttributes attributes{};
    if (fits && XGetWindowAttributes(display, below, &attributes) != 0 && attributes.map_state == IsViewable)
        return below;
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    if (XQueryTree(display, below, &root, &parent, &children, &count) == 0) return 0;
    Window found = 0;
    for (unsigned i = 0; i < count && found == 0; ++i)
        found = Find(display, children[i], title);
    if (children != nullptr) XFree(children);
    return found;
}

int ReadNumber(Display* display, Window window) {
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display, window, &attributes) == 0) return NoNumber;
    XImage* row = XGetImage(display, window, 0, attributes.height / 20, static_cast<unsigned>(attributes.width), 1,
                            AllPlanes, ZPixmap);
    if (row == nullptr) return NoNumber;
    int number = 0;
    const auto bright = [&](int bar) {
        const int x = (2 * bar + 1) * attributes.width / (2 * NumberBars);
        return ((XGetPixel(row, x, 0) >> 8U) & 0xFFU) > 128;
    };
    for (int bit = 0; bit < NumberBits; ++bit)
        number |= (bright(bit + 1) ? 1 : 0) << bit;
    const bool framed = bright(0) && !bright(NumberBars - 1);
    XDestroyImage(row);
    return framed ? number : NoNumber;
}

int IgnoreError(Display*, XErrorEvent*) {
    return 0;  // a window may vanish while it is looked at
}

}  // namespace

void MakeNumberedClip(const std::string& file, const std::string& size, int seconds, const std::string& encoder) {
    const std::string length = ":r=25:d=" + std::to_string(seconds);
    const std::string bars =
        "geq=lum='if(eq(floor(X/8),0),235,if(eq(floor(X/8),13),16,if(mod(floor(N/pow(2,floor(X/8)-1)),2),235,16)))'"
        ":cb=128:cr=128";
    const std::string command =
        "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=" + size + length + " -f lavfi -i color=s=112x8" + length +
        " -f lavfi -i \"aevalsrc='0.5*sin(2*PI*1000*t)*lt(mod(t,1),0.02)':s=48000:d=" + std::to_string(seconds) +
        "\" -filter_complex \"[1]format=yuv420p," + bars + "[n];[n][0]scale2ref=w=iw:h=ih/10:flags=neighbor[b][p];" +
        "[p][b]overlay=0:0,format=yuv420p\" -map 2:a " + encoder + " " + file;
    if (std::system(command.c_str()) != 0) throw std::runtime_error("no clip: " + command);
}

WindowWatch::WindowWatch(const std::string& title, int x, int y) : Title(title), X(x), Y(y), Thread([this] { Run(); }) {
    for (int i = 0; i < 1000 && !Ready; ++i)
        std::this_thread::sleep_for(10ms);
    if (!Ready) throw std::runtime_error("no window " + title);
}

WindowWatch::~WindowWatch() {
    Stop = true;
    Thread.join();
}

std::vector<WindowWatch::Sight> WindowWatch::Take() {
    const std::lock_guard lock(Lock);
    std::vector<Sight> taken;
    taken.swap(Sights);
    Sights.push_back({Clock::now(), Newest});
    return taken;
}

std::optional<WindowWatch::Clock::time_point> WindowWatch::WaitFor(int number, Clock::time_point after,
                                                                   std::chrono::milliseconds limit) {
    while (Clock::now() < after + limit) {
        {
            const std::lock_guard lock(Lock);
            for (const Sight& sight : Sights)
                if (sight.At > after && sight.Number == number) return sight.At;
        }
        std::this_thread::sleep_for(1ms);
    }
    return std::nullopt;
}

// A connection of its own: a renderer that is killed takes its windows along, and new ones come.
void WindowWatch::Run() {
    XSetErrorHandler(&IgnoreError);
    Display* display = XOpenDisplay(nullptr);
    Window window = 0;
    int misses = 0;
    auto lookedBefore = Clock::now();
    while (!Stop && display != nullptr) {
        if (window == 0) {
            window = Find(display, DefaultRootWindow(display), Title);
            if (window != 0) XMoveWindow(display, window, X, Y);
            XSync(display, False);
        }
        const auto asked = Clock::now();
        const int number = window == 0 ? NoNumber : ReadNumber(display, window);
        const auto looked = asked + (Clock::now() - asked) / 2;
        if (number == NoNumber && ++misses % 50 == 0) window = 0;
        if (window != 0) Ready = true;
        if (number != Newest) {
            const std::lock_guard lock(Lock);
            Newest = number;
            // It came at some moment since the look before.
            Sights.push_back({lookedBefore + (looked - lookedBefore) / 2, number});
        }
        lookedBefore = looked;
        std::this_thread::sleep_for(LookPeriod);
    }
    if (display != nullptr) XCloseDisplay(display);
}
