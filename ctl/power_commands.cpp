#include "failure.h"
#include "printing.h"
#include "program.h"
#include "unit.h"

#include <unistd.h>

#include <iostream>

namespace ZorvicCtl {
namespace {

using PowerMethod = Zorvic::StatusCode (Zorvic::Session::*)();

bool Confirmed(const std::string& question) {
    std::cerr << question << " [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

Command Power(const char* command, const char* consequence, PowerMethod method) {
    return [=](const Arguments& typed) {
        if (!typed.Yes && isatty(STDIN_FILENO) == 0)
            throw Failure(ExitStatus::Usage, "Nobody is there to be asked: add --yes to " + std::string(command) + '.');
        Unit unit(typed.Unit);
        const std::string name = OneLine(unit.Name());
        if (!typed.Yes && !Confirmed("\"" + name + "\": " + command + "? " + consequence))
            throw Failure(ExitStatus::Refused, "Nothing was done.");
        unit.Check((unit.Link().*method)(), command);
        if (typed.Json) return PrintJson({{"command", command}, {"unit", name}});
        PrintLine("Told \"" + name + "\" to " + command + ".");
    };
}

}  // namespace

void AddPowerCommands(CommandLine& line) {
    const auto add = [&](const char* name, const char* help, const char* consequence, PowerMethod method) {
        line.Add(name, help, Power(name, consequence, method)).Flag("--yes", line.Values().Yes, "Do not ask");
    };
    add("reboot", "Start the unit again", "What plays ends.", &Zorvic::Session::RebootZorvic);
    add("soft-reboot", "End all playback and read the presets again", "What plays ends.",
        &Zorvic::Session::SoftRebootZorvic);
    add("shutdown", "Switch the unit off", "What plays ends, and it has to be switched on by hand.",
        &Zorvic::Session::ShutdownZorvic);
}

}  // namespace ZorvicCtl
