#pragma once

#include <functional>
#include <string>

namespace join::platform {

/// The URLs by which others open this program. Main thread only.
class UrlEvents {
public:
    virtual ~UrlEvents() = default;

    /// Makes the bundle the user's default handler of a URL scheme. Never keeps its caller waiting; reports
    /// nothing.
    virtual void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) = 0;

    /// Receives every launch URL from now on, on the main thread: its bytes as they came.
    virtual void setEventHandler(std::function<void(const std::string& url)> handler) = 0;
};

} // namespace join::platform
