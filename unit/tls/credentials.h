#pragma once

#include "tls/access.h"

#include <grpcpp/security/auth_context.h>
#include <grpcpp/security/server_credentials.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// What a unit shows to consoles and asks of them.
struct UnitAccess {
    std::shared_ptr<grpc::ServerCredentials> Credentials;
    std::shared_ptr<AccessList> List;  ///< asked for each call
};

/// From the directory's `unit.pem`, `unit.key`, the authority `ca.pem` and, when it is there, the list `revoked`.
/// Throws Fault Misused with the reason when they are missing, over, made for another unit than this GUID, or do not
/// belong together.
UnitAccess UnitCredentials(const std::filesystem::path& directory, const std::string& guid);

/// What the certificate says of its holder, as AccessList wants it.
std::vector<std::string> CertificateEntries(const grpc::AuthContext& context);

}  // namespace ZorvicUnit
