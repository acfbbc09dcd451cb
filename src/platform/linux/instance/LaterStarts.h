#pragma once

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/UrlEvents.h"
#include "platform/linux/instance/SingleInstance.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace join::platform {

/// Delivers launch URLs, that of this start and those of later ones, and decides what becomes of the later
/// starts. Main thread only.
class LaterStarts final : public UrlEvents {
public:
    struct Actions {
        /// Tells the desktop; called on a later turn of the loop, as windows come first.
        std::function<void(const std::string& scheme, const std::string& bundleIdentifier)> registerScheme;
        std::function<bool(const std::string& activationToken)> bringToFront; ///< false: no window is shown
        std::function<bool()> reopen;    ///< shows a window; false when there is nothing to show
        std::function<void()> terminate; ///< calls passOn() before it ends the process
        std::function<bool(const std::vector<std::string>& arguments)> startNext; ///< a new Join
    };

    /// Without an instance later starts cannot reach this process. What is given outlives this object.
    LaterStarts(SingleInstance* instance, MainQueue& mainQueue, Log& log, Actions actions);

    void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) override;
    void setEventHandler(std::function<void(const std::string& url)> handler) override;

    /// Delivers the URL of this start, if it has one; from here on those of later starts follow.
    void begin(const std::optional<std::string>& launchUrl);

    /// Gives up the first place. Whoever handed over what this process has not come to was told that it is
    /// taken: a new process gets it, in the same order.
    void passOn();

private:
    void deliver(const std::string& url);
    void actOnNext();

    SingleInstance* instance_;
    MainQueue& mainQueue_;
    Log& log_;
    Actions actions_;
    std::function<void(const std::string& url)> handler_;
    std::vector<InstanceMessage> unhandled_;
};

} // namespace join::platform
