#include "support/virtualdisplay.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

VirtualDisplay::VirtualDisplay()
    // A server that resets when its last client leaves refuses whoever connects meanwhile. Its complaints about
    // displays that are taken must not stand before the number.
    : Server({"sh", "-c", "exec Xvfb -displayfd 1 -noreset -screen 0 1600x1000x24 2>/dev/null"},
             Directory.Path() + "/number") {
    int number = -1;
    if (!WaitUntil([&] { return (std::ifstream(Directory.Path() + "/number") >> number) && number >= 0; }))
        throw std::runtime_error("no virtual display");
    setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    unsetenv("WAYLAND_DISPLAY");
    Manager = std::make_unique<ChildProcess>(std::vector<std::string>{"openbox"});
    if (!WaitUntil([this] { return Do({"get_desktop"}); })) throw std::runtime_error("no window manager");
}

bool VirtualDisplay::Do(std::vector<std::string> arguments, std::string* output) {
    const std::string file = Directory.Path() + "/xdotool";
    std::filesystem::remove(file);
    arguments.insert(arguments.begin(), "xdotool");
    ChildProcess tool(arguments, file);
    const bool done = tool.Wait(std::chrono::seconds(30)) == 0;
    if (output) {
        std::ifstream stream(file);
        std::getline(stream, *output);
    }
    return done;
}

std::string VirtualDisplay::Window(const std::string& title) {
    std::string id;
    return Do({"search", "--onlyvisible", "--name", "^" + title + "$"}, &id) ? id : std::string();
}

std::string VirtualDisplay::Picture() {
    const std::string file = Directory.Path() + "/screen.rgb";
    ChildProcess import({"import", "-window", "root", "-depth", "8", file});
    if (import.Wait(std::chrono::seconds(30)) != 0) return {};
    return ReadFile(file);
}
