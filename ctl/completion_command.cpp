#include "failure.h"
#include "printing.h"
#include "program.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace ZorvicCtl {
namespace {

/// The names of the options that follow a command, and of those that follow all.
std::string OptionsOf(const CLI::App& app) {
    std::string options = "--json --help";
    for (const CLI::Option* option : app.get_options([](const CLI::Option* o) { return !o->get_lnames().empty(); }))
        if (option->get_name() != "--help") options += " --" + option->get_lnames().front();
    return options;
}

std::string NamesOf(const CLI::App& app) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands({}))
        names += (names.empty() ? "" : " ") + command->get_name();
    return names;
}

void PrintBash(const CLI::App& app) {
    std::cout << "_zorvicctl() {\n"
                 "    local words=\""
              << NamesOf(app)
              << " --help --json --version\"\n"
                 "    case ${COMP_WORDS[1]} in\n";
    for (const CLI::App* command : app.get_subcommands({}))
        std::cout << "        " << command->get_name() << ") [ \"$COMP_CWORD\" -gt 1 ] && words=\""
                  << OptionsOf(*command) << "\" ;;\n";
    std::cout << "    esac\n"
                 "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
                 "}\n"
                 "complete -o default -F _zorvicctl zorvicctl\n";
}

void PrintZsh(const CLI::App& app) {
    std::cout << "#compdef zorvicctl\n"
                 "local -a commands\n"
                 "commands=(\n";
    for (const CLI::App* command : app.get_subcommands({})) {
        std::string help = command->get_description();
        for (std::size_t at = 0; (at = help.find('\'', at)) != std::string::npos; at += 4)
            help.replace(at, 1, "'\\''");
        std::cout << "    '" << command->get_name() << ':' << help << "'\n";
    }
    std::cout << ")\n"
                 "if ((CURRENT == 2)); then\n"
                 "    _describe command commands\n"
                 "else\n"
                 "    case $words[2] in\n";
    for (const CLI::App* command : app.get_subcommands({}))
        std::cout << "        " << command->get_name() << ") compadd -- " << OptionsOf(*command) << " ;;\n";
    std::cout << "    esac\n"
                 "    _files\n"
                 "fi\n";
}

void PrintFish(const CLI::App& app) {
    for (const CLI::App* command : app.get_subcommands({})) {
        std::string help = command->get_description();
        for (std::size_t at = 0; (at = help.find('\'', at)) != std::string::npos; at += 2)
            help.replace(at, 1, "\\'");
        std::cout << "complete -c zorvicctl -n __fish_use_subcommand -f -a " << command->get_name() << " -d '" << help
                  << "'\n";
        for (const CLI::Option* option : command->get_options([](const auto* o) { return !o->get_lnames().empty(); }))
            std::cout << "complete -c zorvicctl -n '__fish_seen_subcommand_from " << command->get_name() << "' -l "
                      << option->get_lnames().front() << '\n';
    }
    std::cout << "complete -c zorvicctl -l json -d 'Print for programs'\n";
}

}  // namespace

void AddCompletionCommand(CommandLine& line) {
    const auto print = [&app = line.Program()](const Arguments& typed) {
        if (typed.Shell == "bash") return PrintBash(app);
        if (typed.Shell == "zsh") return PrintZsh(app);
        PrintFish(app);
    };
    line.AddWithoutUnit("completion", "Print what makes a shell complete this program's commands", print)
        .Choice("SHELL", line.Values().Shell, "bash, zsh or fish", {"bash", "zsh", "fish"});
}

}  // namespace ZorvicCtl
