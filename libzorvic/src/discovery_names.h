#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Zorvic::Internal {

/// The announced names that a browser follows. Names cost whoever announces them nothing, and following one asks the
/// network again and again: there is a limit, and whoever has most names gives one up for a new one.
class AnnouncedNames {
public:
    static constexpr std::size_t Most = 512;

    /// What has to be given up for this one, if anything: of the names that nothing is known of yet the oldest, of
    /// those of one address the newest. It is this one itself when no address has two.
    std::optional<std::string> Add(const std::string& name);
    void Remove(const std::string& name) { Names.erase(name); }
    /// Where the name leads.
    void SetPlace(const std::string& name, const std::string& address);

private:
    struct Name {
        std::string Address;
        std::uint64_t Number = 0;  ///< grows from name to name
    };
    std::map<std::string, Name> Names;
    std::uint64_t Last = 0;
};

}  // namespace Zorvic::Internal
