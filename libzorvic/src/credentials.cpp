#include "credentials.h"

#include "link_error.h"

#include <grpc/grpc_security_constants.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>

namespace Zorvic::Internal {
namespace {

constexpr auto DirectoryVariable = "ZORVIC_TLS_DIR";
constexpr std::string_view UnitEntry = "urn:zorvic:unit:";

std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw LinkError(std::string(DirectoryVariable) + ": cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Units only say that they accept no such certificate.
void CheckTime(const std::string& pem) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                         &BIO_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), &X509_free);
    if (!certificate) throw LinkError(std::string(DirectoryVariable) + ": console.pem is no certificate");
    if (X509_cmp_current_time(X509_get0_notAfter(certificate.get())) < 0)
        throw LinkError(std::string(DirectoryVariable) + ": the console's certificate is over");
}

}  // namespace

const char* CertifiedName() {
    return std::getenv(DirectoryVariable) == nullptr ? nullptr : "zorvic-unit";
}

std::shared_ptr<grpc::ChannelCredentials> ClientCredentials() {
    const char* directory = std::getenv(DirectoryVariable);
    if (directory == nullptr) return grpc::InsecureChannelCredentials();
    grpc::SslCredentialsOptions options;
    options.pem_root_certs = Read(std::string(directory) + "/ca.pem");
    options.pem_cert_chain = Read(std::string(directory) + "/console.pem");
    options.pem_private_key = Read(std::string(directory) + "/console.key");
    CheckTime(options.pem_cert_chain);
    return grpc::SslCredentials(options);
}

std::optional<std::string> CertifiedGuid(const grpc::AuthContext& link) {
    if (!link.IsPeerAuthenticated()) return std::nullopt;
    for (const auto& entry : link.FindPropertyValues(GRPC_X509_SAN_PROPERTY_NAME)) {
        const std::string_view text(entry.data(), entry.size());
        if (text.starts_with(UnitEntry)) return std::string(text.substr(UnitEntry.size()));
    }
    return std::string();
}

}  // namespace Zorvic::Internal
