#include "tls/credentials.h"

#include "fault.h"
#include "tls/certificate_maker.h"

#include <grpcpp/security/auth_metadata_processor.h>
#include <openssl/x509v3.h>
#include <spdlog/fmt/fmt.h>

#include <fstream>
#include <iterator>
#include <utility>

namespace ZorvicUnit {

namespace {

std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw Fault(FaultKind::Misused, fmt::format("--tls-dir: cannot read {}", path.string()));
    return {std::istreambuf_iterator<char>(file), {}};
}

// Asked for each call, before anything of it is carried out.
class Doorkeeper final : public grpc::AuthMetadataProcessor {
public:
    explicit Doorkeeper(std::shared_ptr<AccessList> list) : List(std::move(list)) {}

    bool IsBlocking() const override { return false; }
    grpc::Status Process(const InputMetadata& metadata, grpc::AuthContext* context, OutputMetadata* /*consumed*/,
                         OutputMetadata* /*response*/) override {
        const auto path = metadata.find(":path");
        if (path == metadata.end()) return {grpc::StatusCode::UNAUTHENTICATED, "a call without a method"};
        const std::string refusal =
            List->Refusal({path->second.data(), path->second.size()}, CertificateEntries(*context));
        if (refusal.empty()) return grpc::Status::OK;
        return {grpc::StatusCode::PERMISSION_DENIED, refusal};
    }

private:
    const std::shared_ptr<AccessList> List;
};

bool IsMadeFor(const X509& certificate, const std::string& guid) {
    const std::unique_ptr<GENERAL_NAMES, decltype(&GENERAL_NAMES_free)> names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr)),
        &GENERAL_NAMES_free);
    const std::string wanted = std::string(CertificateEntry::Unit) + guid;
    for (int i = 0; names && i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const GENERAL_NAME* name = sk_GENERAL_NAME_value(names.get(), i);
        if (name->type != GEN_URI) continue;
        const auto* text = reinterpret_cast<const char*>(ASN1_STRING_get0_data(name->d.uniformResourceIdentifier));
        if (wanted ==
            std::string(text, static_cast<std::size_t>(ASN1_STRING_length(name->d.uniformResourceIdentifier))))
            return true;
    }
    return false;
}

// A unit that nobody can reach says why at its start.
void Check(const std::filesystem::path& directory, const std::string& guid) {
    const auto refuse = [&](const std::string& why) {
        throw Fault(FaultKind::Misused, fmt::format("--tls-dir {}: {}", directory.string(), why));
    };
    SignedKey own;
    try {
        own = ReadSignedKey(directory / "unit.pem", directory / "unit.key");
    } catch (const Fault& fault) {
        refuse(fault.what());
    }
    if (X509_cmp_current_time(X509_get0_notAfter(own.Certificate.get())) < 0) refuse("the unit's certificate is over");
    if (!IsMadeFor(*own.Certificate, guid)) refuse("the certificate is of another unit than " + guid);
}

}  // namespace

UnitAccess UnitCredentials(const std::filesystem::path& directory, const std::string& guid) {
    Check(directory, guid);
    grpc::SslServerCredentialsOptions options(GRPC_SSL_REQUEST_AND_REQUIRE_CLIENT_CERTIFICATE_AND_VERIFY);
    options.pem_root_certs = ReadText(directory / "ca.pem");
    options.pem_key_cert_pairs.push_back({ReadText(directory / "unit.key"), ReadText(directory / "unit.pem")});
    UnitAccess access{grpc::SslServerCredentials(options), std::make_shared<AccessList>(directory / "revoked")};
    access.Credentials->SetAuthMetadataProcessor(std::make_shared<Doorkeeper>(access.List));
    return access;
}

std::vector<std::string> CertificateEntries(const grpc::AuthContext& context) {
    std::vector<std::string> entries;
    for (const auto& entry : context.FindPropertyValues(GRPC_X509_SAN_PROPERTY_NAME))
        entries.emplace_back(entry.data(), entry.size());
    return entries;
}

}  // namespace ZorvicUnit
