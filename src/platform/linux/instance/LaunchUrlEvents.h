#pragma once

#include "platform/UrlEvents.h"

#include <functional>
#include <string>

namespace join::platform {

/// Hands launch URLs, that of the command line and those of later starts, to their handler.
class LaunchUrlEvents final : public UrlEvents {
public:
    /// Tells the desktop of a scheme. Called on a later turn of the loop, when windows that are to be shown
    /// have been.
    using Registration = std::function<void(const std::string& scheme, const std::string& bundleIdentifier)>;

    explicit LaunchUrlEvents(Registration registration);

    void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) override;
    void setEventHandler(std::function<void(const std::string& url)> handler) override;

    /// Delivers a launch URL. Without a handler it is lost.
    void deliver(const std::string& url);

private:
    Registration registration_;
    std::function<void(const std::string& url)> handler_;
};

} // namespace join::platform
