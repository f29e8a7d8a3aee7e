#pragma once

#include <openssl/x509.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// The key pair and the certificate of somebody.
struct SignedKey {
    std::shared_ptr<EVP_PKEY> Key;
    std::shared_ptr<X509> Certificate;
};

/// What a certificate says of whom it is made for.
struct Subject {
    enum class Kind { Authority, Unit, Console };
    Kind Is = Kind::Console;
    std::string Name;                    ///< for people
    std::vector<std::string> Addresses;  ///< "DNS:..." and "URI:..." entries, as programs read them
    int Days = 0;                        ///< valid from now on; negative: it is over
};

/// Makes a new key pair and a certificate for it, signed by the authority; null: signed by itself. Among the addresses
/// of others than authorities stands the serial number, where programs find it for each call. Throws Fault Internal.
SignedKey MakeSignedKey(const Subject& subject, const SignedKey* authority);

/// The serial number as it stands in lists of revoked certificates: capital hexadecimal digits.
std::string SerialOf(const X509& certificate);

/// Throw Fault Internal when a file cannot be written or read. The key is readable by its owner alone.
void WriteSignedKey(const SignedKey& signedKey, const std::filesystem::path& certificate,
                    const std::filesystem::path& key);
SignedKey ReadSignedKey(const std::filesystem::path& certificate, const std::filesystem::path& key);

}  // namespace ZorvicUnit
