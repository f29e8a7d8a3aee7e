#include <zorvic/asrun.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <map>
#include <string_view>

namespace Zorvic {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

// As a spreadsheet takes it: quotes where they are needed, and nothing that it would carry out.
std::string CSVText(const std::string& text) {
    constexpr std::string_view Formula = "=+-@\t\r";
    std::string field;
    if (!text.empty() && Formula.find(text.front()) != Formula.npos) field += '\'';
    bool quoted = false;
    for (const char c : text) {
        quoted = quoted || c == '"' || c == ',' || c == '\n' || c == '\r';
        if (c == '"') field += '"';
        field += c;
    }
    return quoted ? '"' + field + '"' : field;
}

std::string JSONText(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        if (static_cast<unsigned char>(c) >= 0x20) {
            quoted += c;
            continue;
        }
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
        quoted += code.data();
    }
    return quoted + '"';
}

std::string List(const std::vector<std::uint32_t>& outputs, const char* separator) {
    std::string text;
    for (const auto output : outputs)
        text += (text.empty() ? "" : separator) + std::to_string(output);
    return text;
}

std::string Milliseconds(microseconds time) {
    return std::to_string(std::chrono::duration_cast<milliseconds>(time).count());
}

const char* ShownWord(AsRunShown shown) {
    switch (shown) {
        case ZORVIC_SHOWN_UNKNOWN:
            return "not known";
        case ZORVIC_SHOWN_LIT:
            return "shown";
        case ZORVIC_SHOWN_NOT:
            return "not shown";
        case ZORVIC_SHOWN_SOUND:
            return "sound only";
        default:
            return "";
    }
}

/// Fields of one object, those without a value left out.
class Object {
public:
    void Raw(const char* name, const std::string& value) {
        if (!value.empty()) Text += (Text.empty() ? "\"" : ",\"") + std::string(name) + "\":" + value;
    }
    void String(const char* name, const std::string& value) {
        if (!value.empty()) Raw(name, JSONText(value));
    }
    std::string Finish() const { return '{' + Text + '}'; }

private:
    std::string Text;
};

}  // namespace

std::string AsRunKindText(AsRunKind kind) {
    static const std::map<int, const char*> words = {{ZORVIC_ASRUN_STARTED, "unit started"},
                                                     {ZORVIC_ASRUN_STOPPED, "unit stopped"},
                                                     {ZORVIC_ASRUN_GAP, "gap"},
                                                     {ZORVIC_ASRUN_LOST, "lost"},
                                                     {ZORVIC_ASRUN_CLOCK, "clock set"},
                                                     {ZORVIC_ASRUN_TAKE, "take"},
                                                     {ZORVIC_ASRUN_PAUSE, "pause"},
                                                     {ZORVIC_ASRUN_RESUME, "resume"},
                                                     {ZORVIC_ASRUN_END, "end"},
                                                     {ZORVIC_ASRUN_SEEK, "seek"},
                                                     {ZORVIC_ASRUN_GOTO, "goto"},
                                                     {ZORVIC_ASRUN_LINK, "link"},
                                                     {ZORVIC_ASRUN_LOOP, "loop"},
                                                     {ZORVIC_ASRUN_HOLD, "hold"},
                                                     {ZORVIC_ASRUN_EDIT, "edit"},
                                                     {ZORVIC_ASRUN_DELETE, "delete"},
                                                     {ZORVIC_ASRUN_IMPORT, "import"},
                                                     {ZORVIC_ASRUN_CONNECT, "connect"},
                                                     {ZORVIC_ASRUN_LEAVE, "leave"},
                                                     {ZORVIC_ASRUN_FAULT, "fault"},
                                                     {ZORVIC_ASRUN_POWER, "power"}};
    const auto found = words.find(kind);
    return found == words.end() ? "kind " + std::to_string(kind) : found->second;
}

std::string AsRunShownText(const AsRunEntry& entry) {
    if (entry.Shown != ZORVIC_SHOWN_LIT) return ShownWord(entry.Shown);
    std::string text = List(entry.Outputs, ", ") + " after " + Milliseconds(entry.LitAfter) + " ms";
    if (entry.Dropped > 0) text += ", " + std::to_string(entry.Dropped) + " dropped";
    return text;
}

std::string AsRunTimeText(AsRunEntry::WallTime time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const auto rest = std::chrono::duration_cast<milliseconds>(time - seconds).count();
    const std::time_t whole = seconds.time_since_epoch().count();
    std::tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 64> text{};
    const auto size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text.data() + size, text.size() - size, ".%03dZ", static_cast<int>(rest));
    return text.data();
}

std::string AsRunCSVHeader() {
    return "number,time,from,kind,preset key,preset,remaining ms,asked by,name,certified,shown,outputs,lit after ms,"
           "dropped,text,monotonic us,boot";
}

std::string AsRunCSV(const AsRunEntry& entry) {
    const bool begins = entry.Shown != ZORVIC_SHOWN_NONE;
    const bool lit = entry.Shown == ZORVIC_SHOWN_LIT;
    const std::array<std::string, 17> fields = {std::to_string(entry.Number),
                                                AsRunTimeText(entry.Wall),
                                                entry.From ? AsRunTimeText(*entry.From) : "",
                                                AsRunKindText(entry.Kind),
                                                entry.PK == 0 ? "" : std::to_string(entry.PK),
                                                entry.Preset,
                                                entry.RemainingMS ? std::to_string(*entry.RemainingMS) : "",
                                                entry.Address,
                                                entry.Client,
                                                entry.Certified ? "yes" : "",
                                                ShownWord(entry.Shown),
                                                List(entry.Outputs, " "),
                                                lit ? Milliseconds(entry.LitAfter) : "",
                                                begins ? std::to_string(entry.Dropped) : "",
                                                entry.Text,
                                                std::to_string(entry.Monotonic.count()),
                                                entry.Boot};
    std::string line;
    for (const std::string& field : fields)
        line += (&field == fields.data() ? "" : ",") + CSVText(field);
    return line;
}

std::string AsRunJSON(const AsRunEntry& entry) {
    Object object;
    object.Raw("number", std::to_string(entry.Number));
    object.String("time", AsRunTimeText(entry.Wall));
    if (entry.From) object.String("from", AsRunTimeText(*entry.From));
    object.String("kind", AsRunKindText(entry.Kind));
    if (entry.PK != 0) object.Raw("pk", std::to_string(entry.PK));
    object.String("preset", entry.Preset);
    if (entry.RemainingMS) object.Raw("remaining_ms", std::to_string(*entry.RemainingMS));
    object.String("address", entry.Address);
    object.String("client", entry.Client);
    if (entry.Certified) object.Raw("certified", "true");
    object.String("shown", ShownWord(entry.Shown));
    if (!entry.Outputs.empty()) object.Raw("outputs", '[' + List(entry.Outputs, ",") + ']');
    if (entry.Shown == ZORVIC_SHOWN_LIT) object.Raw("lit_after_ms", Milliseconds(entry.LitAfter));
    if (entry.Shown != ZORVIC_SHOWN_NONE) object.Raw("dropped", std::to_string(entry.Dropped));
    object.String("text", entry.Text);
    object.Raw("monotonic_us", std::to_string(entry.Monotonic.count()));
    object.String("boot", entry.Boot);
    return object.Finish();
}

}  // namespace Zorvic
