#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// Returns whether a text, such as a command-line argument, is a launch URL, judged by its scheme in upper or
/// lower case (RFC 3986, section 3.1).
bool isLaunchUrl(const std::string& text);

/// What a second start of the program tells the running one.
struct InstanceMessage {
    std::optional<std::string> url; ///< the launch URL of that start; without one, it asks for a window
    std::string activationToken;    ///< the desktop's permission to come to the front; empty if there is none

    bool operator==(const InstanceMessage&) const = default;
};

/// On Linux no argument of a program is longer than 128 KiB, and a token is far shorter than the rest.
inline constexpr std::size_t maximumInstanceMessageSize = std::size_t{128 + 4} * 1024;

/// Returns the bytes of a message, sent as one packet. None of its texts can contain a NUL, since they come
/// from the arguments and the environment.
///
///   message = "tavojoin 1" NUL [ url ] NUL [ token ] NUL      ; url is a launch URL
std::string instanceMessageBytes(const InstanceMessage& message);

/// Returns the message in such a packet, or nothing if the packet is not a message.
std::optional<InstanceMessage> parseInstanceMessage(std::string_view bytes);

} // namespace join::platform
