#include "practice_media.h"

#include "failure.h"
#include "printing.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace ZorvicCtl {
namespace {

struct Clip {
    const char* Name;
    int Seconds;
    const char* Picture;  // what ffmpeg makes it of
    const char* Sound;
};

constexpr Clip Clips[] = {
    {"Walk-in.mp4", 120, "gradients=s=640x360:r=25:speed=0.01:n=2", "sine=147:sample_rate=48000"},
    {"Opening.mp4", 30, "testsrc2=s=640x360:r=25", "sine=220:sample_rate=48000"},
    {"Storm.mp4", 20, "cellauto=s=640x360:r=25:rule=110", "anoisesrc=color=brown:amplitude=0.5:sample_rate=48000"},
    {"Finale.mp4", 45, "smptebars=s=640x360:r=25", "sine=330:sample_rate=48000"}};

// It takes its place when it is complete, so that an end in the middle leaves nothing half.
void Make(const Clip& clip, const std::filesystem::path& directory) {
    const auto file = directory / clip.Name;
    if (std::filesystem::exists(file)) return;
    const auto part = directory / ".making.mp4";
    const int status = RunToEnd({"ffmpeg", "-nostdin", "-v",       "error",      "-y",
                                 "-f",     "lavfi",    "-i",       clip.Picture, "-f",
                                 "lavfi",  "-i",       clip.Sound, "-t",         std::to_string(clip.Seconds),
                                 "-c:v",   "mpeg4",    "-q:v",     "6",          "-c:a",
                                 "aac",    "-ac",      "2",        part.string()},
                                directory / ".making.log");
    if (status != 0)
        throw Failure(ExitStatus::Refused, "ffmpeg, which makes the practice media, is missing or failed; see " +
                                               (directory / ".making.log").string() + '.');
    std::filesystem::rename(part, file);
}

}  // namespace

int RunToEnd(const std::vector<std::string>& arguments, const std::filesystem::path& log) {
    std::vector<char*> argv(arguments.size() + 1);
    std::ranges::transform(arguments, argv.begin(), [](const auto& text) { return const_cast<char*>(text.c_str()); });
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void MakePracticeMedia(const std::filesystem::path& directory) {
    std::filesystem::create_directories(directory);
    for (const Clip& clip : Clips)
        Make(clip, directory);
    std::filesystem::remove(directory / ".making.log");
}

}  // namespace ZorvicCtl
