#pragma once

#include <zorvic/session.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// The unit that a command works on. Every operation throws Failure with the unit's own reason when it does not do what
/// it is asked.
class Unit {
public:
    /// Connects; `text` is what the user typed.
    explicit Unit(const std::string& text);

    Zorvic::Session& Link() { return Session; }
    /// As the console's tab names it.
    std::string Name();

    /// `what` was tried, as in "take 3 \"Overture\"".
    void Check(Zorvic::StatusCode status, const std::string& what);

    /// In the order of the console's list.
    std::vector<Zorvic::Preset> Presets();
    std::vector<Zorvic::PresetState> States();
    std::vector<Zorvic::Asset> Assets();
    /// By number, or by name where it is the only one; "@3" is always a number.
    Zorvic::Preset FindPreset(const std::string& text);
    Zorvic::PresetState StateOf(std::int32_t pk);
    /// Where it plays or is cued, a remaining time; nothing when it does neither.
    std::optional<Zorvic::TimeCode> PositionOf(std::int32_t pk);

private:
    const std::string Typed;
    Zorvic::Session Session;
};

/// "3 \"Overture\""
std::string Title(const Zorvic::Preset& preset);

}  // namespace ZorvicCtl
