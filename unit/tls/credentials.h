#pragma once

#include <grpcpp/security/server_credentials.h>

#include <filesystem>
#include <memory>
#include <string>

namespace ZorvicUnit {

/// What a unit shows to consoles and asks of them: the directory's `unit.pem`, `unit.key`, the authority `ca.pem` and,
/// when it is there, the list `revoked`. Throws Fault Misused with the reason when they are missing, over, made for
/// another unit than this GUID, or do not belong together.
std::shared_ptr<grpc::ServerCredentials> UnitCredentials(const std::filesystem::path& directory,
                                                         const std::string& guid);

}  // namespace ZorvicUnit
