#pragma once

#include <grpcpp/security/auth_context.h>
#include <grpcpp/security/credentials.h>

#include <memory>
#include <optional>
#include <string>

namespace Zorvic::Internal {

/// The name that certificates of all units carry, whatever addresses the units have; null: links are not encrypted.
const char* CertifiedName();

/// What this process shows to units: `console.pem`, `console.key` and the authority `ca.pem` of the directory that the
/// environment variable ZORVIC_TLS_DIR names. Without it links are not encrypted; with it never in the clear. Throws
/// LinkError with the reason when the files are missing or the certificate is over.
std::shared_ptr<grpc::ChannelCredentials> ClientCredentials();

/// The GUID in the certificate of the unit at the other end, empty when it names none; nothing on a link that is not
/// encrypted.
std::optional<std::string> CertifiedGuid(const grpc::AuthContext& link);

}  // namespace Zorvic::Internal
