#include "program.h"

#include "failure.h"

#include <zorvic/asrun.h>
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

namespace ZorvicCtl {
namespace {

constexpr auto Footer =
    "For example: zorvicctl take \"Stage Left\" Overture\n"
    "UNIT is an address, address:port, or the name under which the unit shows on this network.\n"
    "PRESET is a number as in the console's list, or a name that only one preset has; @3 is always number 3.\n"
    "TIME is what is left to play, as in the console: 45, 2:30 or 1:02:03.\n"
    "Exit status: 0 done, 1 refused, 2 wrong usage, 3 the unit does not answer.";

int Complain(const std::string& text, ExitStatus status) {
    std::cout.flush();
    if (!text.empty()) std::cerr << text << std::endl;
    return static_cast<int>(status);
}

int Parse(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : static_cast<int>(ExitStatus::Usage);
    } catch (const Failure& failure) {
        return Complain(failure.what(), failure.Status);
    } catch (const std::exception& error) {
        return Complain(error.what(), ExitStatus::Refused);
    }
}

// Units note in their as-run sheets who asked.
void Introduce() {
    std::array<char, 256> host{};
    if (gethostname(host.data(), host.size() - 1) == 0)
        Zorvic::SetClientName(std::string("zorvicctl on ") + host.data());
}

}  // namespace

Syntax& Syntax::Word(const char* name, std::string& value, const char* help) {
    Command.add_option(name, value, help)->required()->type_name("");
    return *this;
}

Syntax& Syntax::Words(const char* name, std::vector<std::string>& values, const char* help) {
    Command.add_option(name, values, help)->required()->type_name("...");
    return *this;
}

Syntax& Syntax::Words(const char* name, std::vector<std::string>& values, const char* help, int least, int most) {
    Command.add_option(name, values, help)->required(least > 0)->expected(least, most)->type_name("");
    return *this;
}

// With a minimum of 0 the parser would not look for words behind the "--".
Syntax& Syntax::Rest(const char* name, std::vector<std::string>& values, const char* help) {
    Command.add_option(name, values, help)->expected(1, 64)->type_name("");
    return *this;
}

Syntax& Syntax::Choice(const char* name, std::string& value, const char* help,
                       const std::vector<std::string>& choices) {
    Command.add_option(name, value, help)->required()->check(CLI::IsMember(choices))->type_name("");
    return *this;
}

Syntax& Syntax::Text(const char* name, std::string& value, const char* help) {
    Command.add_option(name, value, help)->type_name("");
    return *this;
}

Syntax& Syntax::Flag(const char* name, bool& value, const char* help) {
    Command.add_flag(name, value, help);
    return *this;
}

Syntax& Syntax::Seconds(const char* name, double& value, const char* help) {
    Command.add_option(name, value, help)->check(CLI::Range(0.1, 1e6))->type_name("SECONDS");
    return *this;
}

Syntax& Syntax::Count(const char* name, int& value, const char* help, int most) {
    Command.add_option(name, value, help)->check(CLI::Range(1, most))->type_name("N")->capture_default_str();
    return *this;
}

Syntax CommandLine::AddWithoutUnit(const char* name, const char* help, Command command) {
    CLI::App& added = *App.add_subcommand(name, help);
    added.fallthrough();
    added.callback([this, run = std::move(command)] { run(Typed); });
    return Syntax(added);
}

Syntax CommandLine::Add(const char* name, const char* help, Command command) {
    return AddWithoutUnit(name, help, std::move(command)).Word("UNIT", Typed.Unit, "Address or name of the unit");
}

Syntax CommandLine::AddWithPreset(const char* name, const char* help, Command command) {
    return Add(name, help, std::move(command)).Word("PRESET", Typed.Preset, "Number or name of the preset");
}

int RunProgram(int argc, char** argv) {
    CLI::App app("Controls Zorvic units from scripts and terminals.", "zorvicctl");
    app.require_subcommand(1);
    const auto& formatter = app.get_formatter();
    formatter->label("SUBCOMMAND", "COMMAND ...");
    formatter->label("Subcommands", "Commands");
    formatter->label("Positionals", "Arguments");
    formatter->label("REQUIRED", "");
    app.footer(Footer);
    app.set_version_flag("--version", ZORVIC_CTL_VERSION, "Print the version of this program");
    Arguments typed;
    app.add_flag("--json", typed.Json, "Print JSON, for programs");
    CommandLine line(app, typed);
    AddLookCommands(line);
    AddPlayCommands(line);
    AddMediaCommands(line);
    AddWatchCommand(line);
    AddLogCommand(line);
    AddPowerCommands(line);
    AddBackupCommands(line);
    AddDiffCommand(line);
    AddFleetCommand(line);
    AddCompletionCommand(line);
    Introduce();
    if (argc == 1) return Complain(app.help(), ExitStatus::Usage);
    return Parse(app, argc, argv);
}

}  // namespace ZorvicCtl
