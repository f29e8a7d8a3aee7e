#pragma once

#include <QMenu>

#include <functional>
#include <optional>
#include <string>

/// The unit whose sheet is wanted.
struct AsRunUnit {
    std::string Host;
    QString Label;
};

/// Adds "As-run sheet" to a menu: a window for each unit, which comes to the front when it is open already. `current`
/// tells the unit, nothing when there is none.
void AddAsRunAction(QMenu& menu, std::function<std::optional<AsRunUnit>()> current);
