#include "tls/certificate_maker.h"

#include "fault.h"
#include "tls/access.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ZorvicUnit {

namespace {

constexpr long VersionThree = 2;  // as it is encoded
constexpr long SecondsOfDay = 86'400;
constexpr int SerialBytes = 16;
// Clocks of a venue differ a little.
constexpr long BackdatedSeconds = 3'600;

using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

[[noreturn]] void Fail(const std::string& what) {
    const unsigned long error = ERR_get_error();
    throw Fault(FaultKind::Internal, error == 0 ? what : what + ": " + ERR_reason_error_string(error));
}

void Require(bool done, const char* what) {
    if (!done) Fail(what);
}

void SetSerial(X509& certificate) {
    std::array<unsigned char, SerialBytes> bytes{};
    Require(RAND_bytes(bytes.data(), SerialBytes) == 1, "no random numbers");
    bytes[0] = static_cast<unsigned char>((bytes[0] & 0x7FU) | 0x40U);  // positive, and of one length
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_bin2bn(bytes.data(), SerialBytes, nullptr), &BN_free);
    Require(number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(&certificate)) != nullptr,
            "no serial number");
}

void Extend(X509& certificate, X509& issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()), &X509_EXTENSION_free);
    Require(extension && X509_add_ext(&certificate, extension.get(), -1) == 1,
            "a certificate cannot say what it is for");
}

void Describe(X509& certificate, X509& issuer, const Subject& subject) {
    const bool authority = subject.Is == Subject::Kind::Authority;
    Extend(certificate, issuer, NID_basic_constraints, authority ? "critical,CA:TRUE,pathlen:0" : "critical,CA:FALSE");
    Extend(certificate, issuer, NID_key_usage, authority ? "critical,keyCertSign" : "critical,digitalSignature");
    if (!authority)
        Extend(certificate, issuer, NID_ext_key_usage, subject.Is == Subject::Kind::Unit ? "serverAuth" : "clientAuth");
    if (authority) return;
    std::string addresses = "URI:" + std::string(CertificateEntry::Serial) + SerialOf(certificate);
    for (const std::string& address : subject.Addresses)
        addresses += "," + address;
    Extend(certificate, issuer, NID_subject_alt_name, addresses);
}

File OpenForWriting(const std::filesystem::path& path, mode_t mode) {
    const int opened = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, mode);
    File file(opened < 0 ? nullptr : fdopen(opened, "w"), &std::fclose);
    if (!file) Fail("cannot write " + path.string() + ": " + std::strerror(errno));
    return file;
}

File OpenForReading(const std::filesystem::path& path) {
    File file(std::fopen(path.c_str(), "re"), &std::fclose);
    if (!file) Fail("cannot read " + path.string() + ": " + std::strerror(errno));
    return file;
}

}  // namespace

SignedKey MakeSignedKey(const Subject& subject, const SignedKey* authority) {
    SignedKey made{{EVP_EC_gen("P-256"), &EVP_PKEY_free}, {X509_new(), &X509_free}};
    Require(made.Key && made.Certificate, "no key can be made");
    X509& certificate = *made.Certificate;
    const SignedKey& signer = authority != nullptr ? *authority : made;
    X509_set_version(&certificate, VersionThree);
    SetSerial(certificate);
    const long end = subject.Days * SecondsOfDay;
    X509_gmtime_adj(X509_getm_notBefore(&certificate), end < 0 ? end - SecondsOfDay : -BackdatedSeconds);
    X509_gmtime_adj(X509_getm_notAfter(&certificate), end);
    X509_set_pubkey(&certificate, made.Key.get());
    const auto* name = reinterpret_cast<const unsigned char*>(subject.Name.c_str());
    Require(X509_NAME_add_entry_by_txt(X509_get_subject_name(&certificate), "CN", MBSTRING_UTF8, name, -1, -1, 0) == 1,
            "the name does not fit into a certificate");
    X509_set_issuer_name(&certificate, X509_get_subject_name(signer.Certificate.get()));
    Describe(certificate, *signer.Certificate, subject);
    Require(X509_sign(&certificate, signer.Key.get(), EVP_sha256()) > 0, "a certificate cannot be signed");
    return made;
}

std::string SerialOf(const X509& certificate) {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(
        ASN1_INTEGER_to_BN(X509_get0_serialNumber(&certificate), nullptr), &BN_free);
    char* text = BN_bn2hex(number.get());
    std::string digits(text == nullptr ? "" : text);
    OPENSSL_free(text);
    return digits;
}

void WriteSignedKey(const SignedKey& signedKey, const std::filesystem::path& certificate,
                    const std::filesystem::path& key) {
    const File keyFile = OpenForWriting(key, 0600);
    Require(PEM_write_PrivateKey(keyFile.get(), signedKey.Key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
                std::fflush(keyFile.get()) == 0,
            "cannot write a key");
    const File file = OpenForWriting(certificate, 0644);
    Require(PEM_write_X509(file.get(), signedKey.Certificate.get()) == 1 && std::fflush(file.get()) == 0,
            "cannot write a certificate");
}

SignedKey ReadSignedKey(const std::filesystem::path& certificate, const std::filesystem::path& key) {
    const File file = OpenForReading(certificate);
    const File keyFile = OpenForReading(key);
    SignedKey read{{PEM_read_PrivateKey(keyFile.get(), nullptr, nullptr, nullptr), &EVP_PKEY_free},
                   {PEM_read_X509(file.get(), nullptr, nullptr, nullptr), &X509_free}};
    if (!read.Key || !read.Certificate || X509_check_private_key(read.Certificate.get(), read.Key.get()) != 1)
        Fail(certificate.string() + " and " + key.string() + " do not belong together");
    return read;
}

}  // namespace ZorvicUnit
