#pragma once

#include "sessionmanager.h"

#include <zorvic/session.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

/// What one gesture, or one round of the update pump, knows of the unit: its session, and one list of presets and one
/// of states, each fetched when it is first asked for and never twice. Lives on the stack, for one operation.
class Round {
public:
    /// The lists of rounds gone by: filling them again costs a fraction of building new ones. Shared, because a round
    /// may outlive the view it was begun for.
    struct Lists {
        std::vector<Zorvic::Preset> Presets;
        std::vector<Zorvic::PresetState> States;
    };

    /// `selection`: the keys of the selected presets, the current one first.
    Round(std::string guid, std::shared_ptr<Lists> spare, std::vector<int> selection = {});
    /// For a caller that has the session already.
    Round(Zorvic::Session* session, std::shared_ptr<Lists> spare, std::vector<int> selection = {});
    ~Round();
    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;

    /// Null when the unit has no session.
    Zorvic::Session* Session() const { return Link; }
    /// Looks the session up again, after the event loop has run: another one may have taken its place by then, and
    /// what was fetched from the old one counts no more. False when there is none.
    bool Renew();

    /// Null when the unit does not tell.
    const std::vector<Zorvic::Preset>* Presets();
    const Zorvic::Preset* FindPreset(int pk);
    /// Null when the unit does not tell.
    const std::vector<Zorvic::PresetState>* States();
    const Zorvic::PresetState* FindState(int pk);
    /// Where the preset stands on the unit; nothing when it does not stand anywhere.
    std::optional<Zorvic::TimeCode> FindTimeCode(int pk) const;

    /// The preset that seeks, trims, marks and mix sliders act on; null without one.
    const Zorvic::Preset* Current();
    const Zorvic::PresetState* CurrentState();
    /// Keys of the selected presets that the unit still has, in ascending order.
    std::vector<int> SelectedKeys();
    /// Runs `edit` on a copy of the current preset and sends the copy when that returned true. Success when nothing was
    /// to be sent.
    Zorvic::StatusCode EditCurrent(const std::function<bool(Zorvic::Preset&)>& edit);

private:
    std::string GUID;
    std::unique_ptr<SessionHandle> Handle;
    Zorvic::Session* Link;
    std::vector<int> Selection;
    std::shared_ptr<Lists> Spare;
    Lists Held;
    std::optional<bool> HasPresets;
    std::optional<bool> HasStates;
    std::unordered_map<int, const Zorvic::Preset*> PresetsByPK;
    std::unordered_map<int, const Zorvic::PresetState*> StatesByPK;
};
