#pragma once

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <memory>
#include <string>

namespace join::test {

/// A key and its self-signed certificate, valid from yesterday to tomorrow.
class TestCertificate {
public:
    /// The names it is valid for, in OpenSSL's form: "DNS:localhost,IP:127.0.0.1"; and that of its owner.
    explicit TestCertificate(const std::string& names, const std::string& owner = "test")
        : key_(EVP_EC_gen("P-256"), EVP_PKEY_free), certificate_(X509_new(), X509_free) {
        constexpr long day = 86'400; // seconds
        X509* certificate = certificate_.get();
        X509_set_version(certificate, X509_VERSION_3);
        ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
        X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
        X509_gmtime_adj(X509_getm_notAfter(certificate), day);
        X509_set_pubkey(certificate, key_.get());
        X509_NAME* name = X509_get_subject_name(certificate);
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>(owner.c_str()), -1, -1, 0);
        X509_set_issuer_name(certificate, name);
        X509_EXTENSION* extension =
            X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str());
        X509_add_ext(certificate, extension, -1);
        X509_EXTENSION_free(extension);
        X509_sign(certificate, key_.get(), EVP_sha256());
    }

    EVP_PKEY* key() const { return key_.get(); }
    X509* certificate() const { return certificate_.get(); }

    std::string pem() const {
        const std::unique_ptr<BIO, int (*)(BIO*)> text(BIO_new(BIO_s_mem()), BIO_free);
        PEM_write_bio_X509(text.get(), certificate_.get());
        char* bytes = nullptr;
        const long size = BIO_get_mem_data(text.get(), &bytes);
        return {bytes, static_cast<std::size_t>(size)};
    }

private:
    std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> key_;
    std::unique_ptr<X509, void (*)(X509*)> certificate_;
};

} // namespace join::test
