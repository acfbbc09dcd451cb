#pragma once

#include <curl/curl.h>

#include <openssl/x509_vfy.h>

#include <string>

namespace join::platform {

/// The authorities against which a server's certificate is verified: the system's, in libcurl's folder and
/// bundle, and those named by SSL_CERT_FILE and SSL_CERT_DIR. From a folder only the required certificates
/// are read. Reading the bundle, which mostly has the same contents, takes longer than the rest of a request:
/// it is read only if a certificate cannot be verified without it.
class CurlTrust {
public:
    /// For CURLOPT_SSL_CTX_FUNCTION; the data is a CurlTrust, which must outlive the request.
    static CURLcode prepare(CURL* handle, void* sslContext, void* trust) noexcept;

    /// Returns what to add to the error for a refused certificate; usually empty.
    std::string remark() const;

private:
    static int verify(X509_STORE_CTX* attempt, void* unused) noexcept;

    std::string unreadableFile_; ///< the file named by SSL_CERT_FILE
};

} // namespace join::platform
