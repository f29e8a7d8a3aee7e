#pragma once

#include "tls/revoked_file.h"

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

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
    /// A thread of its own ("access") looks at the list again and again: no call waits for a disk. Throws Fault as
    /// RevokedFile does.
    explicit AccessList(std::filesystem::path revoked);

    /// Why the holder of these entries may not make this call ("/package.Service/Method"); empty when it may.
    std::string Refusal(std::string_view call, const std::vector<std::string>& entries);

private:
    void Run(const std::stop_token& stop);

    RevokedFile File;  ///< of the thread only
    std::mutex Lock;   ///< guards Revoked
    std::condition_variable_any Wake;
    RevokedFile::Serials Revoked;
    std::jthread Thread;  // last: it uses all of the above
};

}  // namespace ZorvicUnit
