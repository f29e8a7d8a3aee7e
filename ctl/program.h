#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ZorvicCtl {

/// The whole program; what it returns is its exit status.
int RunProgram(int argc, char** argv);

/// What is typed after a command's name. The fields that a command does not ask for stay as they are here.
struct Arguments {
    std::string Unit;
    std::string Preset;
    std::string Time;
    std::string Shell;
    std::string File;
    std::vector<std::string> Words;
    std::string Since;
    int Newest = 0;      ///< how many; 0: all
    bool Csv = false;    ///< print for spreadsheets
    bool Json = false;   ///< print for programs
    bool Yes = false;    ///< do not ask
    bool Apply = false;  ///< do what is shown
    bool Empty = false;  ///< without presets
    int Units = 2;       ///< how many to start
    double Seconds = 2;  ///< to look for units
    double Limit = 0;    ///< seconds after which to end; 0: never
};

using Command = std::function<void(const Arguments&)>;

/// What may follow the name of a command. Words come in the order in which they are added here.
class Syntax {
public:
    explicit Syntax(CLI::App& command) : Command(command) {}

    Syntax& Word(const char* name, std::string& value, const char* help);
    /// At least one, or any number up to `most`.
    Syntax& Words(const char* name, std::vector<std::string>& values, const char* help);
    Syntax& Words(const char* name, std::vector<std::string>& values, const char* help, int least, int most);
    /// All that follows "--".
    Syntax& Rest(const char* name, std::vector<std::string>& values, const char* help);
    Syntax& Choice(const char* name, std::string& value, const char* help, const std::vector<std::string>& choices);
    /// May be left out.
    Syntax& Text(const char* name, std::string& value, const char* help);
    Syntax& Flag(const char* name, bool& value, const char* help);
    Syntax& Seconds(const char* name, double& value, const char* help);
    Syntax& Count(const char* name, int& value, const char* help, int most);

private:
    CLI::App& Command;
};

/// Adds commands to the program.
class CommandLine {
public:
    CommandLine(CLI::App& app, Arguments& typed) : App(app), Typed(typed) {}

    /// One that works on a unit, which is the first word.
    Syntax Add(const char* name, const char* help, Command command);
    Syntax AddWithoutUnit(const char* name, const char* help, Command command);
    /// The preset that it works on follows the unit.
    Syntax AddWithPreset(const char* name, const char* help, Command command);
    Arguments& Values() { return Typed; }
    /// To read from when a command runs.
    const CLI::App& Program() const { return App; }

private:
    CLI::App& App;
    Arguments& Typed;
};

// One for each file of commands.
void AddLookCommands(CommandLine& line);
void AddPlayCommands(CommandLine& line);
void AddMediaCommands(CommandLine& line);
void AddWatchCommand(CommandLine& line);
void AddLogCommand(CommandLine& line);
void AddPowerCommands(CommandLine& line);
void AddBackupCommands(CommandLine& line);
void AddDiffCommand(CommandLine& line);
void AddFleetCommand(CommandLine& line);
void AddCompletionCommand(CommandLine& line);

}  // namespace ZorvicCtl
