#pragma once

#include <functional>
#include <string>

namespace join::platform {

/// The URLs with which other programs open this one. Main thread only.
class UrlEvents {
public:
    virtual ~UrlEvents() = default;

    /// Makes the bundle the user's default handler of a URL scheme. Never blocks, and reports nothing.
    virtual void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) = 0;

    /// The handler receives every launch URL from now on, on the main thread, as raw bytes.
    virtual void setEventHandler(std::function<void(const std::string& url)> handler) = 0;
};

} // namespace join::platform
