#include "support/unitprocess.h"

#include <csignal>
#include <fstream>
#include <regex>
#include <stdexcept>

UnitProcess::UnitProcess(std::string store, std::vector<std::string> options)
    : Store(std::move(store)), Options(std::move(options)) {
    Start();
}

void UnitProcess::Kill() {
    Child->Signal(SIGKILL);
    Child->Wait(std::chrono::seconds(10));
}

void UnitProcess::Start() {
    const std::string port = Address.empty() ? "0" : Address.substr(Address.rfind(':') + 1);
    const std::string log = Store + ".log";
    std::ofstream(log, std::ios::trunc).close();
    std::vector<std::string> arguments = {ZORVIC_UNIT_PROGRAM, "--store", Store, "--port", port};
    arguments.insert(arguments.end(), Options.begin(), Options.end());
    Child.reset();
    Child = std::make_unique<ChildProcess>(arguments, log);

    const std::regex ready("listening on (\\S+)");
    std::smatch match;
    std::string text;
    const bool listening = WaitUntil([&] {
        text = ReadFile(log);
        return std::regex_search(text, match, ready) || !Child->Running();
    });
    if (!listening || match.empty()) throw std::runtime_error("the unit did not start:\n" + text);
    Address = match[1];
}

void MakeClip(const std::string& file, int seconds) {
    std::vector<std::string> arguments = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
    for (const char* source : {"testsrc2=s=320x180:r=10", "sine=frequency=330:sample_rate=48000"})
        arguments.insert(arguments.end(), {"-f", "lavfi", "-i", source});
    arguments.insert(arguments.end(), {"-c:v", "mpeg4", "-c:a", "aac", "-ac", "2"});
    arguments.insert(arguments.end(), {"-t", std::to_string(seconds), file});
    if (ChildProcess(arguments).Wait(std::chrono::seconds(60)) != 0)
        throw std::runtime_error("ffmpeg could not make " + file);
}
