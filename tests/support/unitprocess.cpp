#include "support/unitprocess.h"

#include <csignal>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

std::string ReadWhole(const std::string& file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

}  // namespace

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
        text = ReadWhole(log);
        return std::regex_search(text, match, ready) || !Child->Running();
    });
    if (!listening || match.empty()) throw std::runtime_error("the unit did not start:\n" + text);
    Address = match[1];
}

void MakeClip(const std::string& file, int seconds) {
    ChildProcess ffmpeg({"ffmpeg",
                         "-nostdin",
                         "-v",
                         "error",
                         "-y",
                         "-f",
                         "lavfi",
                         "-i",
                         "testsrc2=s=320x180:r=10",
                         "-f",
                         "lavfi",
                         "-i",
                         "sine=frequency=330:sample_rate=48000",
                         "-t",
                         std::to_string(seconds),
                         "-c:v",
                         "mpeg4",
                         "-c:a",
                         "aac",
                         "-ac",
                         "2",
                         file});
    if (ffmpeg.Wait(std::chrono::seconds(60)) != 0) throw std::runtime_error("ffmpeg could not make " + file);
}
