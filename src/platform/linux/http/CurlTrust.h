#pragma once

#include <curl/curl.h>

#include <openssl/x509_vfy.h>

#include <string>

namespace join::platform {

/// The authorities that a server's certificate is verified against: the system's, in libcurl's folder and
/// bundle of them, and those that SSL_CERT_FILE and SSL_CERT_DIR name. Of a folder only the certificates that
/// are asked for are read. Reading the bundle, which mostly holds the same, takes longer than the rest of a
/// request: it is read only when a certificate cannot be verified without it.
class CurlTrust {
public:
    /// For CURLOPT_SSL_CTX_FUNCTION; the data is a CurlTrust that outlives the request.
    static CURLcode prepare(CURL* handle, void* sslContext, void* trust) noexcept;

    /// What to add to the error of a certificate that was refused; mostly empty.
    std::string remark() const;

private:
    static int verify(X509_STORE_CTX* attempt, void* unused) noexcept;

    std::string unreadableFile_; ///< that SSL_CERT_FILE names
};

} // namespace join::platform
