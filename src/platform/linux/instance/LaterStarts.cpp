#include "platform/linux/instance/LaterStarts.h"

#include <utility>

namespace join::platform {

LaterStarts::LaterStarts(SingleInstance* instance, MainQueue& mainQueue, Log& log, Actions actions)
    : instance_(instance), mainQueue_(mainQueue), log_(log), actions_(std::move(actions)) {}

void LaterStarts::setDefaultHandler(const std::string& scheme, const std::string& bundleIdentifier) {
    mainQueue_.enqueue([=, this] { actions_.registerScheme(scheme, bundleIdentifier); });
}

void LaterStarts::setEventHandler(std::function<void(const std::string& url)> handler) {
    handler_ = std::move(handler);
}

void LaterStarts::begin(const std::optional<std::string>& launchUrl) {
    if (instance_)
        instance_->messages().setNotification([this] { mainQueue_.enqueue([this] { actOnNext(); }); });
    if (launchUrl)
        deliver(*launchUrl);
}

void LaterStarts::deliver(const std::string& url) {
    if (handler_)
        handler_(url);
}

void LaterStarts::actOnNext() {
    const auto message = instance_->messages().next();
    if (!message)
        return;
    const bool isWindowShown = actions_.bringToFront(message->activationToken);
    if (message->url) {
        deliver(*message->url);
    } else if (!isWindowShown && !actions_.reopen()) {
        log_.write("There is no window to show : a new Join takes over");
        unhandled_.push_back(*message);
        actions_.terminate();
    }
}

void LaterStarts::passOn() {
    if (!instance_)
        return;
    for (InstanceMessage& message : instance_->resign())
        unhandled_.push_back(std::move(message));
    bool isNextStarted = false;
    for (const InstanceMessage& message : unhandled_) {
        std::vector<std::string> arguments;
        if (message.url)
            arguments.push_back(*message.url);
        const bool isPassedOn = isNextStarted ? instance_->handOver(message) : actions_.startNext(arguments);
        isNextStarted = true;
        if (!isPassedOn)
            log_.write("A later start is lost : " + message.url.value_or("(no URL)"));
    }
}

} // namespace join::platform
