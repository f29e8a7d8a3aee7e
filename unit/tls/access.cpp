#include "tls/access.h"

#include "thread_name.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
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

AccessList::AccessList(std::filesystem::path revoked) : File(std::move(revoked)), Revoked(File.Revoked()) {
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
    while (!Wake.wait_for(lock, stop, LookPeriod, [&] { return stop.stop_requested(); })) {
        if (!File.Look(std::chrono::steady_clock::now())) continue;
        const std::scoped_lock change(Lock);
        Revoked = File.Revoked();
    }
}

}  // namespace ZorvicUnit
