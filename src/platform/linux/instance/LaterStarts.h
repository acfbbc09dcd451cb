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

/// Delivers the launch URLs of this start and of later ones, and decides what happens to the later starts.
/// Main thread only.
class LaterStarts final : public UrlEvents {
public:
    struct Actions {
        /// Registers the scheme with the desktop; called on a later turn of the loop, because windows come
        /// first.
        std::function<void(const std::string& scheme, const std::string& bundleIdentifier)> registerScheme;
        std::function<bool(const std::string& activationToken)> bringToFront; ///< false: no window visible
        std::function<bool()> reopen;    ///< shows a window; false if there is nothing to show
        std::function<void()> terminate; ///< calls passOn() before it ends the process
        std::function<bool(const std::vector<std::string>& arguments)> startNext; ///< starts a new Join
    };

    /// Without an instance, later starts cannot reach this process. Everything given must outlive this
    /// object.
    LaterStarts(SingleInstance* instance, MainQueue& mainQueue, Log& log, Actions actions);

    void setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) override;
    void setEventHandler(std::function<void(const std::string& url)> handler) override;

    /// Delivers the URL of this start, if there is one; those of later starts follow from now on.
    void begin(const std::optional<std::string>& launchUrl);

    /// Gives up the first place. The senders of messages that are still waiting were told that they are
    /// taken, so a new process gets these messages, in the same order.
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
