#include "zorvicview.h"

#include "view/mixdesk.h"

void ZorvicView::SetVolSliders(const Zorvic::Preset& preset) {
    Mix->ShowVolumes(preset);
}

void ZorvicView::SetVideoSliderPlayers(const Zorvic::Preset& preset) {
    Mix->ShowPlayers(preset);
}

void ZorvicView::UpdateVideoSliders(const Zorvic::Preset& preset) {
    Mix->ShowPicture(preset);
}

void ZorvicView::OnVolSliderMoved(int value, QSlider* slider) {
    EditCurrent(tr("Set the volume"), [&](Zorvic::Preset& preset) { return Mix->ApplyVolume(value, slider, preset); });
}

void ZorvicView::OnVideoSliderChanged(float value, float Zorvic::PinnedAsset::*member) {
    EditCurrent(tr("Adjust the picture"),
                [&](Zorvic::Preset& preset) { return Mix->ApplyPicture(value, member, preset); });
}

void ZorvicView::RefreshMix() {
    if (const auto preset = GetSelectedPreset()) {
        UpdateVideoSliders(*preset);
        SetVolSliders(*preset);
    }
}
