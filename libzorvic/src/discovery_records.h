#pragma once

#include <zorvic/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Zorvic::Internal {

/// One service instance as DNS-SD describes it. Everything in it may be forged or stale.
struct AnnouncedUnit {
    std::string Key;      ///< instance and interface: what names it when it changes or goes
    std::string Address;  ///< dotted IPv4
    std::uint16_t Port = 0;
    std::vector<std::string> Text;  ///< the TXT record: "key=value" strings of any bytes
};

/// Address to connect to: with ":port" when the port is not the default.
std::string HostText(const AnnouncedUnit& announced);

/// What the TXT record says. Unknown keys and malformed values are skipped; a key that stands twice counts once, first.
LANZorvic FromAnnouncement(const AnnouncedUnit& announced);

/// The record to show: the unit's own answer, and the announcement for what the answer leaves empty.
LANZorvic Merge(const AnnouncedUnit& announced, const LANZorvic& answer);

/// Orders by nickname, then GUID; of records with one GUID the first address stays. Records without a GUID go.
void SortAndUnite(std::vector<LANZorvic>& units);

}  // namespace Zorvic::Internal
