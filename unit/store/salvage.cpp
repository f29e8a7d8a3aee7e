#include "store/salvage.h"

#include "fault.h"
#include "store/connection.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

// More than were ever made by hand, and looked for within seconds.
constexpr std::int64_t MostKeys = 1'000'000;

template <typename Read>
void Try(const Read& read) {
    try {
        read();
    } catch (const Fault&) {
        // The next one may be there.
    }
}

/// Goes over the presets of one database, and over what cannot be read between them.
class Reader {
public:
    Reader(Connection& database, Salvage& found) : Database(database), Found(found) {}

    void ReadAll() {
        while (Next <= Found.LastKey && !ReadOn())
            ReadOne();
    }

private:
    // False when it stopped at a place that cannot be read.
    bool ReadOn() {
        try {
            auto rows = Database.Prepare("SELECT pk, record, hash FROM presets WHERE pk >= ? ORDER BY pk");
            rows.Bind(Next);
            while (rows.Step())
                Take({rows.Integer(0), rows.Blob(1), rows.Integer(2)});
            return true;
        } catch (const Fault&) {
            return false;
        }
    }

    void ReadOne() {
        const std::int64_t key = Next++;
        try {
            auto row = Database.Prepare("SELECT pk, record, hash FROM presets WHERE pk = ?");
            row.Bind(key);
            if (row.Step()) Take({row.Integer(0), row.Blob(1), row.Integer(2)});
        } catch (const Fault&) {
            Found.Unreadable.insert(key);
        }
    }

    void Take(PresetRow row) {
        const std::int64_t key = row.PK;
        Next = std::max(Next, key + 1);
        if (row.IsWhole())
            Found.Presets[key] = std::move(row);
        else
            Found.Unreadable.insert(key);
    }

    Connection& Database;
    Salvage& Found;
    std::int64_t Next = 1;
};

}  // namespace

Salvage ReadWhatIsThere(const std::filesystem::path& file, std::int64_t lastKey) {
    Salvage found{.Presets = {}, .Unreadable = {}, .Counted = {}, .LastKey = lastKey};
    // SQLite removes the log of an empty one.
    if (!HoldsSomething(file)) return found;
    Try([&] {
        Connection database(file, Connection::Access::Write);
        database.KeepLogOnClose(true);
        Try([&] { found.Counted = ReadLedger(database); });
        for (const char* sql :
             {"SELECT seq FROM sqlite_sequence WHERE name = 'presets'", "SELECT max(pk) FROM presets"})
            Try([&] { found.LastKey = std::max(found.LastKey, std::min(database.Number(sql), MostKeys)); });
        Reader(database, found).ReadAll();
    });
    return found;
}

bool HoldsSomething(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 0;
}

bool Proves(const Ledger& ledger, const std::map<std::int64_t, PresetRow>& presets) {
    Ledger found = ledger;
    found.Presets = static_cast<std::int64_t>(presets.size());
    found.Marks = 0;
    for (const auto& [key, row] : presets)
        found.Marks += row.Mark();
    return found == ledger;
}

}  // namespace ZorvicUnit
