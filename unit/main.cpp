#include "daemon/daemon.h"
#include "daemon/options.h"
#include "daemon/power_switch.h"
#include "fault.h"
#include "files/names.h"
#include "log.h"
#include "thread_name.h"
#include "tls/certificates_command.h"

#include <grpc/support/log.h>
#include <spdlog/cfg/env.h>
#include <spdlog/spdlog.h>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

// An option asks for what does not exist on this machine.
constexpr int BadValue = 2;

// The process ends by then even when a disk hangs; nothing that was acknowledged is lost by it.
constexpr std::chrono::milliseconds EndLimit(1800);
constexpr std::chrono::milliseconds LogLimit(100);

// The RPC library's own way is straight to standard error, from the threads that serve consoles.
void LogOfRpc(gpr_log_func_args* args) {
    const auto level = args->severity == GPR_LOG_SEVERITY_ERROR ? spdlog::level::warn : spdlog::level::debug;
    spdlog::log(level, "rpc: {}", ZorvicUnit::ForLog(args->message));
}

// Starts the program again in this process, on the port that it has been running on.
[[noreturn]] void Reexecute(int argc, char** argv, bool portGiven, std::uint16_t port) {
    std::vector<std::string> arguments(argv, argv + argc);
    if (!portGiven) arguments.push_back("--port=" + std::to_string(port));
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    execv("/proc/self/exe", pointers.data());
    spdlog::critical("reboot: can not start the program again");
    ZorvicUnit::FlushLog(LogLimit);
    std::_Exit(EXIT_FAILURE);
}

[[noreturn]] void End(bool again, int argc, char** argv, bool portGiven, std::uint16_t port) {
    ZorvicUnit::FlushLog(LogLimit);
    if (again) Reexecute(argc, argv, portGiven, port);
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main(int argc, char** argv) {
    ZorvicUnit::StartLog("zorvic-unit");
    gpr_set_log_function(&LogOfRpc);
    spdlog::cfg::load_env_levels();
    if (argc > 1 && std::string_view(argv[1]) == "certificates") return ZorvicUnit::RunCertificates(argc, argv);
    ZorvicUnit::Options options;
    if (const auto status = ZorvicUnit::ParseOptions(argc, argv, options)) return *status;
    ZorvicUnit::PowerSwitch power;
    try {
        ZorvicUnit::Daemon daemon(options, power);
        const std::uint16_t port = daemon.Listener().Port();
        std::printf("listening on %s\n", daemon.Listener().Address().c_str());
        std::fflush(stdout);
        const bool again = daemon.Run() == zorvic::v1::POWER_ACTION_REBOOT;
        spdlog::info(again ? "reboot" : "shutdown");
        std::thread([=] {
            ZorvicUnit::NameThread("ending");
            std::this_thread::sleep_for(EndLimit);
            spdlog::warn("a part of the unit does not stop; ending without it");
            End(again, argc, argv, options.Port != 0, port);
        }).detach();
        daemon.Stop();
        End(again, argc, argv, options.Port != 0, port);
    } catch (const ZorvicUnit::Fault& fault) {
        spdlog::critical("{}", fault.what());
        ZorvicUnit::FlushLog(LogLimit);
        return fault.Kind == ZorvicUnit::FaultKind::Misused ? BadValue : EXIT_FAILURE;
    } catch (const std::exception& error) {
        spdlog::critical("{}", error.what());
        ZorvicUnit::FlushLog(LogLimit);
        return EXIT_FAILURE;
    }
}
