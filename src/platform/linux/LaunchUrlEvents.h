#pragma once

#include "platform/UrlEvents.h"

#include <functional>
#include <string>

namespace join::platform {

/// Hands the launch URL of the command line to its handler. The desktop is not told of the scheme yet.
class LaunchUrlEvents final : public UrlEvents {
public:
    void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) override;
    void setEventHandler(std::function<void(const std::string& url)> handler) override;

    /// Delivers a launch URL. Without a handler it is lost.
    void deliver(const std::string& url);

private:
    std::function<void(const std::string& url)> handler_;
};

/// Whether an argument of the command line is a launch URL: its scheme, in any case of letters (RFC 3986,
/// section 3.1).
bool isLaunchUrl(const std::string& argument);

} // namespace join::platform
