#pragma once

namespace join::platform {
class HttpClient;
class MainQueue;
} // namespace join::platform

/// The one function of the loadable HTTP module. Gives a new client that the caller owns, nullptr when none
/// can be made. The queue is where its downloads and connections report; it outlives them.
extern "C" [[gnu::visibility("default")]] join::platform::HttpClient*
join_make_http_client(join::platform::MainQueue& mainQueue) noexcept;
