#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace join::tools {

/// A fresh key (EC, P-256) with a self-signed certificate, for a server on loopback: valid for localhost,
/// 127.0.0.1 and ::1, from an hour ago for two days. A client trusts it by trusting it as an authority.
class Certificate {
public:
    /// Of that owner. Throws std::runtime_error.
    explicit Certificate(const std::string& owner = "localhost");

    /// Both live as long as this object.
    X509* certificate() const { return certificate_.get(); }
    EVP_PKEY* key() const { return key_.get(); }

    /// The certificate, without its key.
    std::string pem() const;

private:
    struct Release {
        void operator()(X509* certificate) const { X509_free(certificate); }
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    };

    std::unique_ptr<EVP_PKEY, Release> key_;
    std::unique_ptr<X509, Release> certificate_;
};

} // namespace join::tools
