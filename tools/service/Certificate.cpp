#include "service/Certificate.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <array>
#include <stdexcept>

namespace join::tools {
namespace {

constexpr long hour = 60L * 60;
constexpr long versionThree = 2; // the field counts from 0

void check(bool success) {
    if (success)
        return;
    std::array<char, 256> text{};
    ERR_error_string_n(ERR_get_error(), text.data(), text.size());
    throw std::runtime_error(std::string("certificate: ") + text.data());
}

/// Random, so that two certificates of the same name are never confused.
void setSerialNumber(X509* certificate) {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_new(), BN_free);
    check(number && BN_rand(number.get(), 127, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) == 1 &&
          BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr);
}

void setNames(X509* certificate, const std::string& text) {
    X509_NAME* const name = X509_get_subject_name(certificate);
    check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                     reinterpret_cast<const unsigned char*>(text.data()),
                                     static_cast<int>(text.size()), -1, 0) == 1);
    check(X509_set_issuer_name(certificate, name) == 1);
}

void addExtension(X509* certificate, int kind, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value), X509_EXTENSION_free);
    check(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

} // namespace

Certificate::Certificate(const std::string& owner) : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
    X509* const certificate = certificate_.get();
    check(key_ != nullptr && certificate != nullptr);
    check(X509_set_version(certificate, versionThree) == 1);
    setSerialNumber(certificate);
    setNames(certificate, owner);
    check(X509_gmtime_adj(X509_getm_notBefore(certificate), -hour) != nullptr);
    check(X509_gmtime_adj(X509_getm_notAfter(certificate), 47 * hour) != nullptr);
    check(X509_set_pubkey(certificate, key_.get()) == 1);
    addExtension(certificate, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(certificate, NID_key_usage, "critical,digitalSignature");
    addExtension(certificate, NID_ext_key_usage, "serverAuth");
    addExtension(certificate, NID_subject_key_identifier, "hash");
    addExtension(certificate, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");
    check(X509_sign(certificate, key_.get(), EVP_sha256()) > 0);
}

std::string Certificate::pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> buffer(BIO_new(BIO_s_mem()), BIO_free);
    check(buffer && PEM_write_bio_X509(buffer.get(), certificate_.get()) == 1);
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(buffer.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

} // namespace join::tools
