#pragma once

#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <chrono>

namespace ZorvicUnit {

/// What a certificate's holder may do beside watching.
enum class AccessRole { Operate, Edit, Power };

/// As certificates and options call them, in this order: "operate", "edit", "power".
const std::vector<std::string>& AccessRoleNames();

/// The entries of certificates that units and consoles read.
namespace CertificateEntry {
inline constexpr std::string_view Unit = "urn:zorvic:unit:";      ///< followed by the unit's GUID
inline constexpr std::string_view Role = "urn:zorvic:role:";      ///< followed by the name of a role
inline constexpr std::string_view Serial = "urn:zorvic:serial:";  ///< followed by the certificate's own number
/// The one name of all units, whatever their addresses are.
inline constexpr std::string_view UnitName = "zorvic-unit";
}  // namespace CertificateEntry

/// Decides by the entries of its certificate what a console may ask for. Safe to use from several threads.
class AccessList {
public:
    /// The file lists serial numbers of certificates that are no longer accepted, one a line; it need not be there, and
    /// is read again after a change.
    explicit AccessList(std::filesystem::path revoked);

    /// Why the holder of these entries may not make this call ("/package.Service/Method"); empty when it may.
    std::string Refusal(std::string_view call, const std::vector<std::string>& entries);

private:
    bool IsRevoked(const std::string& serial);
    void Refresh();

    const std::filesystem::path File;
    std::mutex Lock;  ///< guards all below
    std::chrono::steady_clock::time_point Looked;
    std::filesystem::file_time_type Written;
    std::set<std::string, std::less<>> Revoked;
};

}  // namespace ZorvicUnit
