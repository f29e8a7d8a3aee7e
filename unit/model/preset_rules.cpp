#include "model/preset_rules.h"

#include "fault.h"
#include "utf8.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/util/field_mask_util.h>
#include <spdlog/fmt/fmt.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <string>

namespace ZorvicUnit {

using zorvic::v1::Mark;
using zorvic::v1::Preset;
using zorvic::v1::TabOrdering;

namespace {

[[noreturn]] void Misuse(const std::string& what) {
    throw Fault(FaultKind::Misused, what);
}

void CheckText(const char* what, const std::string& text, std::size_t limit) {
    if (text.size() > limit) Misuse(fmt::format("{} of more than {} bytes", what, limit));
    if (!IsUtf8(text)) Misuse(fmt::format("{} is not valid UTF-8", what));
}

void CheckAsset(const zorvic::v1::PinnedAsset& asset) {
    if (asset.full_path().empty()) Misuse("an asset without a path");
    CheckText("an asset path", asset.full_path(), MaxPresetBytes);
    for (const float value : {asset.hue(), asset.saturation(), asset.brightness(), asset.contrast()})
        if (!std::isfinite(value)) Misuse("a picture value of " + asset.full_path() + " is not a finite number");
}

void CheckCanvases(const Preset& preset) {
    if (preset.canvases_size() > MaxCanvases) Misuse(fmt::format("more than {} canvases", MaxCanvases));
    std::uint64_t outputs = 0;
    for (int number = 0; number < preset.canvases_size(); ++number) {
        const auto& canvas = preset.canvases(number);
        if (number > 0 && canvas.index() <= preset.canvases(number - 1).index())
            Misuse("canvases are not in the order of their index");
        outputs += canvas.num_outputs();
        if (canvas.assets_size() > MaxAssets) Misuse(fmt::format("more than {} assets on a canvas", MaxAssets));
        std::for_each(canvas.assets().begin(), canvas.assets().end(), CheckAsset);
    }
    if (outputs > MaxPlayers) Misuse(fmt::format("canvases need {} players, there are {}", outputs, MaxPlayers));
}

void CheckMarks(const char* kind, const Marks& marks) {
    if (marks.size() > MaxMarks) Misuse(fmt::format("more than {} {}s", MaxMarks, kind));
    std::set<std::int32_t> ids;
    std::set<std::int32_t> times;
    for (const Mark& mark : marks) {
        CheckText("the name of a mark", mark.name(), MaxNameBytes);
        if (!ids.insert(mark.id()).second) Misuse(fmt::format("two {}s with id {}", kind, mark.id()));
        if (!times.insert(mark.time_ms()).second) Misuse(fmt::format("two {}s at {} ms", kind, mark.time_ms()));
    }
}

void CheckTabs(const Preset& preset) {
    if (preset.tab_order_size() > MaxTabs) Misuse(fmt::format("places in more than {} tabs", MaxTabs));
    std::set<std::int32_t> tabs;
    for (const TabOrdering& tab : preset.tab_order())
        if (!tabs.insert(tab.tab_id()).second) Misuse(fmt::format("two places in tab {}", tab.tab_id()));
}

void CheckVolume(const Preset& preset) {
    if (preset.volume_size() > MaxVolumes) Misuse(fmt::format("volumes of more than {} channels", MaxVolumes));
    for (const std::uint32_t level : preset.volume())
        if (level > std::numeric_limits<std::uint16_t>::max()) Misuse(fmt::format("a volume of {}", level));
}

}  // namespace

void MergeFields(Preset& stored, const Preset& sent, const google::protobuf::FieldMask& mask) {
    const auto& fields = *Preset::descriptor();
    for (const std::string& name : mask.paths()) {
        const auto* field = fields.FindFieldByName(name);
        if (!field || field->number() == Preset::kPkFieldNumber) Misuse("no such field to write: " + name);
    }
    google::protobuf::util::FieldMaskUtil::MergeOptions options;
    options.set_replace_message_fields(true);
    options.set_replace_repeated_fields(true);
    google::protobuf::util::FieldMaskUtil::MergeMessageTo(sent, mask, options, &stored);
}

const TabOrdering* FirstTab(const Preset& preset) {
    const auto& tabs = preset.tab_order();
    const auto found = std::find_if(tabs.begin(), tabs.end(), [](const auto& tab) { return tab.tab_id() == 0; });
    return found == tabs.end() ? nullptr : &*found;
}

void Normalise(Preset& preset, std::int32_t tabIndex) {
    if (!FirstTab(preset)) preset.add_tab_order()->set_index(tabIndex);
    const auto byId = [](const Mark& left, const Mark& right) { return left.id() < right.id(); };
    const auto byTab = [](const TabOrdering& left, const TabOrdering& right) { return left.tab_id() < right.tab_id(); };
    std::stable_sort(preset.mutable_gotos()->begin(), preset.mutable_gotos()->end(), byId);
    std::stable_sort(preset.mutable_countdowns()->begin(), preset.mutable_countdowns()->end(), byId);
    std::stable_sort(preset.mutable_tab_order()->begin(), preset.mutable_tab_order()->end(), byTab);
    // What this version does not know must not be kept and handed out unchecked.
    preset.DiscardUnknownFields();
}

std::size_t BytesOf(const Preset& preset) {
    using google::protobuf::io::CodedOutputStream;
    return preset.ByteSizeLong() -
           (preset.pk() == 0 ? 0 : 1 + CodedOutputStream::VarintSize32SignExtended(preset.pk()));
}

void CheckPreset(const Preset& preset) {
    CheckText("the name", preset.name(), MaxNameBytes);
    CheckText("the notes", preset.notes(), MaxNotesBytes);
    CheckText("the colour", preset.color(), MaxNameBytes);
    CheckCanvases(preset);
    CheckMarks("goto", preset.gotos());
    CheckMarks("countdown", preset.countdowns());
    CheckTabs(preset);
    CheckVolume(preset);
    if (BytesOf(preset) > MaxPresetBytes) Misuse(fmt::format("the preset is larger than {} bytes", MaxPresetBytes));
}

Marks& MarksOf(Preset& preset, zorvic::v1::MarkKind kind) {
    switch (kind) {
        case zorvic::v1::MARK_KIND_GOTO:
            return *preset.mutable_gotos();
        case zorvic::v1::MARK_KIND_COUNTDOWN:
            return *preset.mutable_countdowns();
        default:
            Misuse(fmt::format("no such kind of mark: {}", static_cast<int>(kind)));
    }
}

Marks::iterator FindMark(Marks& marks, std::int32_t timeMS) {
    return std::find_if(marks.begin(), marks.end(), [=](const Mark& mark) { return mark.time_ms() == timeMS; });
}

std::int32_t NextMarkId(const Marks& marks) {
    std::set<std::int32_t> ids;
    for (const Mark& mark : marks)
        ids.insert(mark.id());
    if (ids.empty() || *ids.rbegin() < 1) return 1;
    if (*ids.rbegin() < std::numeric_limits<std::int32_t>::max()) return *ids.rbegin() + 1;
    std::int32_t id = 1;
    while (ids.contains(id))
        ++id;
    return id;
}

}  // namespace ZorvicUnit
