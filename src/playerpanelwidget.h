#pragma once

#include "ui_playerpanel.h"

#include <zorvic/types.h>

#include <QWidget>

class MetadataCache;

/// What one output of the unit will play. Disabled when that is nothing, or nothing known.
class PlayerPanelWidget : public QWidget, public Ui::PlayerPanelUI {
    Q_OBJECT

public:
    /// `player` is one flag. `canvas` is null for every output of a canvas but its first; it is read here only.
    PlayerPanelWidget(Zorvic::Player player, MetadataCache* cache, Zorvic::CanvasInfo* canvas);

private:
    bool ShowAsset(MetadataCache& cache);

    Zorvic::Player OurPlayer;
    Zorvic::CanvasInfo* Canvas;
};
