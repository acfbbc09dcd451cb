// What another process says to the running program.

#include "platform/linux/instance/InstanceMessage.h"
#include "Target.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform;
    if (const auto message = parseInstanceMessage(input)) {
        require(!message->url || isLaunchUrl(*message->url));
        require(instanceMessageBytes(*message) == input);
    }
    InstanceMessage message{.url = std::string(takeText(input)),
                            .activationToken = std::string(takeText(input))};
    if (!isLaunchUrl(*message.url))
        message.url.reset();
    const std::string bytes = instanceMessageBytes(message);
    require(bytes.size() <= maximumInstanceMessageSize && parseInstanceMessage(bytes) == message);
}

} // namespace join::fuzz
