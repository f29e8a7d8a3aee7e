#include "support/unitprocess.h"

#include <csignal>
#include <stdexcept>

void UnitProcess::Kill() {
    Child->Signal(SIGKILL);
    Child->Wait(std::chrono::seconds(10));
}

void UnitProcess::Start() {
    std::vector<std::string> arguments = {ZORVIC_UNIT_PROGRAM, "--store", Store, "--port", Port};
    arguments.insert(arguments.end(), Options.begin(), Options.end());
    const std::string log = Store + ".log";
    std::filesystem::remove(log);
    Child = std::make_unique<ChildProcess>(arguments, log);
    static const std::string Ready = "listening on 127.0.0.1:";
    std::string text;
    std::size_t ready = std::string::npos;
    WaitUntil([&] {
        text = ReadFile(log);
        ready = text.find(Ready);
        return text.find('\n', ready) != std::string::npos || !Child->Running();
    });
    if (ready == std::string::npos) throw std::runtime_error("the unit did not start:\n" + text);
    Port = std::to_string(std::stoi(text.substr(ready + Ready.size())));
}

void MakeClip(const std::string& file, int seconds) {
    const std::string command =
        "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=320x180:r=10 -f lavfi -i sine=330:sample_rate=48000 "
        "-c:v mpeg4 -c:a aac -ac 2 -t " +
        std::to_string(seconds) + " \"$0\"";
    if (ChildProcess({"sh", "-c", command, file}).Wait(std::chrono::seconds(60)) != 0)
        throw std::runtime_error("ffmpeg could not make " + file);
}
