#include "log.h"

#include "thread_name.h"

#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace ZorvicUnit {

namespace {

// Minutes of a busy log; some 2 MB.
constexpr std::size_t MostLines = 4096;

/// Written by the log's thread alone. Counts what it was asked to flush.
class StandardError final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
public:
    bool WaitForFlush(std::size_t number, std::chrono::milliseconds limit) {
        std::unique_lock lock(Lock);
        return Flushed.wait_for(lock, limit, [&] { return Flushes >= number; });
    }

private:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        std::string_view rest(line.data(), line.size());
        while (!rest.empty()) {
            const ssize_t written = write(STDERR_FILENO, rest.data(), rest.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return;  // there is nowhere left to say so
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }

    void flush_() override {
        const std::scoped_lock lock(Lock);
        ++Flushes;
        Flushed.notify_all();
    }

    std::mutex Lock;  ///< guards the count
    std::condition_variable Flushed;
    std::size_t Flushes = 0;
};

/// Lives until the process ends: threads that nobody joins log, too.
struct Log {
    std::shared_ptr<spdlog::details::thread_pool> Writer =
        std::make_shared<spdlog::details::thread_pool>(MostLines, 1, [] { NameThread("log"); });
    std::shared_ptr<StandardError> Sink = std::make_shared<StandardError>();
    std::mutex Lock;  ///< guards the two below
    std::size_t LossesTold = 0;
    std::size_t FlushesAsked = 0;
};

Log& TheLog() {
    static auto* log = new Log;
    return *log;
}

}  // namespace

void StartLog(const std::string& name) {
    Log& log = TheLog();
    spdlog::set_default_logger(std::make_shared<spdlog::async_logger>(name, log.Sink, log.Writer,
                                                                      spdlog::async_overflow_policy::overrun_oldest));
}

void ReportLostLines() {
    Log& log = TheLog();
    const std::scoped_lock lock(log.Lock);
    const std::size_t lost = log.Writer->overrun_counter();
    const std::size_t before = std::exchange(log.LossesTold, lost);
    if (lost > before) spdlog::warn("{} lines of the log are lost: it was not read fast enough", lost - before);
}

void FlushLog(std::chrono::milliseconds limit) {
    Log& log = TheLog();
    const std::scoped_lock lock(log.Lock);
    spdlog::default_logger()->flush();
    log.Sink->WaitForFlush(++log.FlushesAsked, limit);
}

}  // namespace ZorvicUnit
