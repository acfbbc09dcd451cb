#pragma once

namespace join::platform {
class HttpClient;
}

/// The one function of the loadable HTTP module. Gives a new client that the caller owns, nullptr when none
/// can be made.
extern "C" [[gnu::visibility("default")]] join::platform::HttpClient* join_make_http_client() noexcept;
