#include "render/stage/run_ledger.h"

#include <chrono>

namespace ZorvicRender {

namespace {

constexpr Nanoseconds Period = std::chrono::seconds(1);

}  // namespace

void RunLedger::NoteRuns(const RunId& id, bool pictures) {
    auto& figures = Accounts[id].Figures;
    figures.Id = id;
    figures.Pictures = figures.Pictures || pictures;
}

void RunLedger::NoteLit(const RunId& id, std::uint32_t output, TimePoint at) {
    const auto found = Accounts.find(id);
    if (found == Accounts.end() || !found->second.Figures.Lit.try_emplace(output, at).second) return;
    found->second.Urgent = true;
}

void RunLedger::NoteDropped(const RunId& id, std::uint64_t count) {
    const auto found = Accounts.find(id);
    if (found == Accounts.end() || count == 0) return;
    found->second.Figures.Dropped += count;
    found->second.Changed = true;
}

void RunLedger::NoteOver(const RunId& id) {
    const auto found = Accounts.find(id);
    if (found == Accounts.end()) return;
    found->second.Figures.Over = true;
    found->second.Urgent = true;
}

std::vector<RunFigures> RunLedger::Take(TimePoint now) {
    const bool all = now - LastTaken >= Period;
    if (all) LastTaken = now;
    std::vector<RunFigures> taken;
    for (auto account = Accounts.begin(); account != Accounts.end();) {
        Account& known = account->second;
        if (known.Urgent || (known.Changed && all)) {
            taken.push_back(known.Figures);
            known.Urgent = known.Changed = false;
        }
        account = known.Figures.Over ? Accounts.erase(account) : std::next(account);
    }
    return taken;
}

}  // namespace ZorvicRender
