#include "tls/access.h"

#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds LookPeriod(500);

using Roles = std::map<std::string_view, AccessRole>;

std::optional<AccessRole> RoleFor(std::string_view method) {
    static const Roles roles = {
        {"SelectPreset", AccessRole::Operate}, {"Take", AccessRole::Operate},      {"Pause", AccessRole::Operate},
        {"End", AccessRole::Operate},          {"SeekTo", AccessRole::Operate},    {"CreatePreset", AccessRole::Edit},
        {"UpdatePreset", AccessRole::Edit},    {"DeletePreset", AccessRole::Edit}, {"CreateMark", AccessRole::Edit},
        {"RenameMark", AccessRole::Edit},      {"DeleteMark", AccessRole::Edit},   {"DeleteAsset", AccessRole::Edit},
        {"InstallAsset", AccessRole::Edit},    {"Power", AccessRole::Power}};
    const auto found = roles.find(method);
    return found == roles.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

const std::vector<std::string>& AccessRoleNames() {
    static const std::vector<std::string> names = {"operate", "edit", "power"};
    return names;
}

// The first reading is done when the unit begins to serve.
AccessList::AccessList(std::filesystem::path revoked) : File(std::move(revoked)) {
    Refresh();
    Thread = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

std::string AccessList::Refusal(std::string_view call, const std::vector<std::string>& entries) {
    for (const std::string& entry : entries) {
        if (!entry.starts_with(CertificateEntry::Serial)) continue;
        const std::scoped_lock lock(Lock);
        if (Revoked.contains(std::string_view(entry).substr(CertificateEntry::Serial.size())))
            return "this console's certificate is revoked";
    }
    const auto role = RoleFor(call.substr(call.rfind('/') + 1));
    if (!role) return {};
    const std::string& name = AccessRoleNames().at(static_cast<std::size_t>(*role));
    const bool may = std::ranges::find(entries, std::string(CertificateEntry::Role) + name) != entries.end();
    return may ? "" : "this console's certificate does not allow it to " + name;
}

void AccessList::Run(const std::stop_token& stop) {
    NameThread("access");
    std::mutex nobodys;
    std::unique_lock lock(nobodys);
    while (!Wake.wait_for(lock, stop, LookPeriod, [&] { return stop.stop_requested(); }))
        Refresh();
}

// A list that cannot be read for a moment revokes what it revoked before.
void AccessList::Refresh() {
    std::error_code missing;
    const auto written = std::filesystem::last_write_time(File, missing);
    if (missing || written == Written) return;
    std::ifstream lines(File);
    if (!lines) return;
    Written = written;
    std::set<std::string, std::less<>> revoked;
    for (std::string serial; lines >> serial;)
        revoked.insert(serial);
    spdlog::info("{} certificates are revoked", revoked.size());
    const std::scoped_lock lock(Lock);
    Revoked.swap(revoked);
}

}  // namespace ZorvicUnit
