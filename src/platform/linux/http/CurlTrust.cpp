#include "platform/linux/http/CurlTrust.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cstdlib>
#include <memory>

namespace join::platform {

namespace {

const char* valueOf(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value ? value : nullptr;
}

/// Repeats the verification, with the certificates that the store has gained since the first attempt.
bool verifyAgain(X509_STORE_CTX* attempt, X509_STORE* store) {
    const std::unique_ptr<X509_STORE_CTX, void (*)(X509_STORE_CTX*)> again(X509_STORE_CTX_new(),
                                                                           X509_STORE_CTX_free);
    if (!again || X509_STORE_CTX_init(again.get(), store, X509_STORE_CTX_get0_cert(attempt),
                                      X509_STORE_CTX_get0_untrusted(attempt)) != 1)
        return false;
    X509_VERIFY_PARAM_set1(X509_STORE_CTX_get0_param(again.get()), X509_STORE_CTX_get0_param(attempt));
    const bool isTrusted = X509_verify_cert(again.get()) == 1;
    X509_STORE_CTX_set_error(attempt, X509_STORE_CTX_get_error(again.get()));
    if (isTrusted)
        X509_STORE_CTX_set0_verified_chain(attempt, X509_STORE_CTX_get1_chain(again.get()));
    return isTrusted;
}

} // namespace

/// Called for every new connection, after libcurl has set its folder. An error left in OpenSSL's queue would
/// be taken for one of the connection.
CURLcode CurlTrust::prepare(CURL* /*handle*/, void* sslContext, void* trust) noexcept {
    auto* context = static_cast<SSL_CTX*>(sslContext);
    const char* file = valueOf("SSL_CERT_FILE");
    const char* folders = valueOf("SSL_CERT_DIR");
    if (file && SSL_CTX_load_verify_file(context, file) != 1)
        static_cast<CurlTrust*>(trust)->unreadableFile_ = file;
    if (folders)
        SSL_CTX_load_verify_dir(context, folders); // several, separated by colons
    ERR_clear_error();
    SSL_CTX_set_cert_verify_callback(context, &verify, nullptr);
    return CURLE_OK;
}

int CurlTrust::verify(X509_STORE_CTX* attempt, void* /*unused*/) noexcept {
    if (X509_verify_cert(attempt) == 1)
        return 1;
    const char* bundle = curl_version_info(CURLVERSION_NOW)->cainfo;
    X509_STORE* store = X509_STORE_CTX_get0_store(attempt);
    const bool isTrusted = bundle && X509_STORE_load_file(store, bundle) == 1 && verifyAgain(attempt, store);
    ERR_clear_error();
    return isTrusted ? 1 : 0;
}

std::string CurlTrust::remark() const {
    return unreadableFile_.empty()
               ? ""
               : " (the certificates in SSL_CERT_FILE, " + unreadableFile_ + ", could not be read)";
}

} // namespace join::platform
