#include "asrun/recorder.h"

#include <google/protobuf/util/message_differencer.h>
#include <spdlog/fmt/fmt.h>

#include <algorithm>
#include <chrono>
#include <optional>

namespace ZorvicUnit {

using zorvic::v1::AsRunEntry;
using What = PlayEvent::What;

namespace {

constexpr std::chrono::seconds LoopPeriod(1);
constexpr std::chrono::minutes FaultPeriod(1);
// Of one text: names and paths are shorter, reasons of faults may be anything.
constexpr std::size_t MostText = 600;

// Cut where a character ends.
std::string Short(const std::string& text) {
    if (text.size() <= MostText) return text;
    std::size_t end = MostText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return text.substr(0, end);
}

AsRunEntry EntryOf(Zorvic::AsRunKind kind, const std::string& text, const Asker& who) {
    AsRunEntry entry;
    entry.set_kind(kind);
    entry.set_text(Short(text));
    entry.set_address(who.Address);
    entry.set_client(who.Client);
    entry.set_certified(who.Certified);
    return entry;
}

// The mark at whose time a seek has arrived.
std::optional<std::string> GotoAt(const PlayEvent& event) {
    for (const auto& mark : event.Preset->gotos())
        if (mark.time_ms() == event.RemainingMS) return mark.name();
    return std::nullopt;
}

Zorvic::AsRunKind KindOf(const PlayEvent& event) {
    switch (event.Kind) {
        case What::Taken:
            return Zorvic::ZORVIC_ASRUN_TAKE;
        case What::Paused:
            return Zorvic::ZORVIC_ASRUN_PAUSE;
        case What::Resumed:
            return Zorvic::ZORVIC_ASRUN_RESUME;
        case What::Ended:
            return Zorvic::ZORVIC_ASRUN_END;
        case What::Sought:
        case What::Cued:
            return GotoAt(event) ? Zorvic::ZORVIC_ASRUN_GOTO : Zorvic::ZORVIC_ASRUN_SEEK;
        case What::Linked:
            return Zorvic::ZORVIC_ASRUN_LINK;
        case What::Looped:
            return Zorvic::ZORVIC_ASRUN_LOOP;
        case What::Held:
            break;
    }
    return Zorvic::ZORVIC_ASRUN_HOLD;
}

std::string TextOf(const PlayEvent& event) {
    switch (event.Kind) {
        case What::Sought:
            return fmt::format("{}from {} ms", GotoAt(event) ? *GotoAt(event) + ", " : "", event.From);
        case What::Cued:
            return fmt::format("{}cued", GotoAt(event) ? *GotoAt(event) + ", " : "");
        case What::Ended:
            return event.Asked ? "" : "at its end";
        case What::Linked:
            return fmt::format("after preset {}", event.From);
        case What::Looped:
            return fmt::format("pass {} begins", event.Pass);
        default:
            return {};
    }
}

}  // namespace

Recorder& Recorder::None() {
    static Sheet sheet({}, {.Bytes = 0});
    static Recorder recorder(sheet);
    return recorder;
}

void Recorder::Played(std::span<const PlayEvent> events, const Asker& who) {
    const std::scoped_lock lock(Lock);
    for (const PlayEvent& event : events)
        if (!IsTooSoon(event)) Record(event, event.Asked ? who : Asker());
}

// A preset of a few pictures that loops for hours would leave nothing else in the sheet; the number of the next pass
// that is recorded tells of those between. Called with Lock held, as are the two below.
bool Recorder::IsTooSoon(const PlayEvent& event) {
    if (event.Kind != What::Looped) return false;
    const auto last = Loops.find(event.Preset->pk());
    if (last != Loops.end() && event.At - last->second < LoopPeriod) return true;
    Loops[event.Preset->pk()] = event.At;
    return false;
}

void Recorder::Record(const PlayEvent& event, const Asker& who) {
    auto entry = EntryOf(KindOf(event), TextOf(event), who);
    entry.set_pk(event.Preset->pk());
    entry.set_preset(event.Preset->name());
    if (event.RemainingMS) entry.set_remaining_ms(*event.RemainingMS);
    if (event.Kind == What::Taken || event.Kind == What::Linked) return Begin(event, std::move(entry));
    Pages.Record(entry, event.At);
}

void Recorder::Begin(const PlayEvent& event, AsRunEntry entry) {
    entry.set_shown(HasOutputs ? Zorvic::ZORVIC_SHOWN_UNKNOWN : Zorvic::ZORVIC_SHOWN_NOT);
    const RunKey run(event.Preset->pk(), event.Run);
    Pages.Record(entry, event.At);
    if (!HasOutputs || entry.number() == 0) return;
    if (Open.size() >= MostOpenRuns)
        Open.erase(std::ranges::min_element(Open, {}, [](const auto& known) { return known.second.Entry.number(); }));
    Open[run] = {.Taken = event.At, .Entry = std::move(entry)};
}

void Recorder::Edited(const zorvic::v1::Preset& preset, const std::string& how, const Asker& who) {
    auto entry = EntryOf(Zorvic::ZORVIC_ASRUN_EDIT, how, who);
    entry.set_pk(preset.pk());
    entry.set_preset(preset.name());
    Pages.Record(entry);
}

void Recorder::Deleted(const zorvic::v1::Preset& preset, const Asker& who) {
    auto entry = EntryOf(Zorvic::ZORVIC_ASRUN_DELETE, "", who);
    entry.set_pk(preset.pk());
    entry.set_preset(preset.name());
    Pages.Record(entry);
}

void Recorder::Note(Zorvic::AsRunKind kind, const std::string& text, const Asker& who) {
    auto entry = EntryOf(kind, text, who);
    Pages.Record(entry);
}

bool Recorder::Comes(const Asker& who) {
    std::optional<std::size_t> before;
    {
        const std::scoped_lock lock(Lock);
        before = Coming.Admit(who.Address, std::chrono::steady_clock::now());
    }
    if (!before) return false;
    Note(Zorvic::ZORVIC_ASRUN_CONNECT, *before == 0 ? "" : fmt::format("{} more came and went before", *before), who);
    return true;
}

void Recorder::Fault(const std::string& text) {
    const auto now = std::chrono::steady_clock::now();
    {
        const std::scoped_lock lock(Lock);
        if (text == LastFault && now - LastFaultAt < FaultPeriod) return;
        LastFault = text;
        LastFaultAt = now;
    }
    Note(Zorvic::ZORVIC_ASRUN_FAULT, text);
}

void Recorder::SetOutputs(bool any) {
    const std::scoped_lock lock(Lock);
    HasOutputs = any;
}

void Recorder::RendererBegins() {
    const std::scoped_lock lock(Lock);
    for (auto& [run, open] : Open)
        open.DroppedBefore = open.Entry.dropped();
}

void Recorder::Shown(const zorvic::render::RunReport& report) {
    const std::scoped_lock lock(Lock);
    for (const auto& figures : report.runs())
        Take(figures);
}

void Recorder::Take(const zorvic::render::RunFigures& figures) {
    const auto found = Open.find({figures.pk(), figures.run()});
    if (found == Open.end()) return;
    OpenRun& run = found->second;
    AsRunEntry& entry = run.Entry;
    for (const auto& lit : figures.lit()) {
        if (std::ranges::find(entry.outputs(), lit.output()) != entry.outputs().end()) continue;
        const auto after = std::chrono::nanoseconds(lit.at()) - run.Taken.time_since_epoch();
        const auto us = std::max<std::int64_t>(0, std::chrono::duration_cast<std::chrono::microseconds>(after).count());
        const bool first = entry.outputs().empty();
        entry.set_lit_after_us(first ? static_cast<std::uint64_t>(us)
                                     : std::min(entry.lit_after_us(), static_cast<std::uint64_t>(us)));
        entry.add_outputs(lit.output());
    }
    entry.set_dropped(run.DroppedBefore + figures.dropped());
    if (!entry.outputs().empty()) {
        entry.set_shown(Zorvic::ZORVIC_SHOWN_LIT);
    } else if (figures.over()) {
        entry.set_shown(figures.pictures() ? Zorvic::ZORVIC_SHOWN_NOT : Zorvic::ZORVIC_SHOWN_SOUND);
    }
    Pages.Amend(entry);
    if (figures.over()) Open.erase(found);
}

std::string DifferingFields(const zorvic::v1::Preset& before, const zorvic::v1::Preset& after) {
    using google::protobuf::util::MessageDifferencer;
    std::string names;
    const auto* fields = zorvic::v1::Preset::descriptor();
    for (int i = 0; i < fields->field_count(); ++i) {
        MessageDifferencer differencer;
        const auto* field = fields->field(i);
        if (differencer.CompareWithFields(before, after, {field}, {field})) continue;
        names += names.empty() ? field->name() : ", " + field->name();
    }
    return names;
}

}  // namespace ZorvicUnit
