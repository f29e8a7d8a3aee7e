// A reader of media files in the same cage as the real one. It reads them too, unless their last word tells it to
// misbehave.

#include "media/service.h"
#include "media/wire.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using zorvic::media::Answer;
using zorvic::media::Order;

std::string LastWord(const ZorvicUnit::Descriptor& file) {
    struct stat status = {};
    fstat(file.Get(), &status);
    std::array<char, 6> word = {};
    pread(file.Get(), word.data(), word.size(), status.st_size - static_cast<off_t>(word.size()));
    const std::string text(word.data(), word.size());
    return text.substr(text.find_last_of('.') + 1);
}

/// What the cage lets through.
std::string Escapes() {
    std::array<char, 8> bytes = {};
    std::array<char*, 1> none = {};
    const iovec own = {bytes.data(), bytes.size()};
    const rlimit more = {64, 64};
    const std::map<std::string, bool> tries = {
        {"socket", socket(AF_INET, SOCK_STREAM, 0) >= 0},
        {"read", open("/etc/hosts", O_RDONLY) >= 0},
        {"own memory as a file", open("/proc/self/mem", O_RDWR) >= 0},
        {"program", execve("/bin/true", none.data(), none.data()) >= 0},
        {"process", fork() >= 0},
        {"signal", kill(getppid(), 0) >= 0},
        {"memory of the unit", process_vm_readv(getppid(), &own, 1, &own, 1, 0) >= 0 || errno != EPERM},
        {"code", mmap(nullptr, 4096, PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED},
        {"limits", setrlimit(RLIMIT_NOFILE, &more) >= 0}};
    std::string escaped = "out:";
    for (const auto& [name, succeeded] : tries)
        if (succeeded) escaped += ' ' + name;
    return escaped;
}

Answer Misbehave(const Order& order, const ZorvicUnit::Descriptor& file) {
    const std::string word = LastWord(file);
    const bool levels = order.kind() == Order::KIND_LEVELS;
    if (word == "crash" || (word == "mute" && levels)) std::abort();
    if (word == "gone") std::_Exit(0);
    while (word == "hang")
        usleep(1000);
    Answer answer = ZorvicUnit::CarryOut(order, file);
    if (word == "out") answer.mutable_refusal()->set_reason(Escapes());
    if (word != "last") return answer;
    ZorvicUnit::SendFrame(STDIN_FILENO, answer.SerializeAsString());
    std::_Exit(0);
}

}  // namespace

int main() {
    ZorvicUnit::Serve(STDIN_FILENO, &Misbehave);
    std::_Exit(0);
}
