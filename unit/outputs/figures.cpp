#include "outputs/figures.h"

namespace ZorvicUnit {

zorvic::v1::Figures FiguresOf(const zorvic::render::Beat& beat) {
    zorvic::v1::Figures figures;
    for (const auto& from : beat.outputs()) {
        auto& output = *figures.add_outputs();
        output.set_output(from.number());
        output.set_shown(from.shown());
        output.set_dropped(from.dropped());
        output.set_repeated(from.repeated());
        output.set_late(from.late());
        output.set_first_frame_ms(from.first_frame_ms());
        output.set_seek_ms(from.seek_ms());
    }
    figures.set_sound_underruns(beat.audio().underruns());
    figures.set_sound_offset_us(beat.audio().offset_us());
    figures.set_memory(beat.memory());
    return figures;
}

}  // namespace ZorvicUnit
