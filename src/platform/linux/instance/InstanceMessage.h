#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// Whether a text, an argument of the command line for instance, is a launch URL: its scheme, in any case of
/// letters (RFC 3986, section 3.1).
bool isLaunchUrl(const std::string& text);

/// What a second start of the program says to the running one.
struct InstanceMessage {
    std::optional<std::string> url; ///< the launch URL it was started with; without one, a window is wanted
    std::string activationToken;    ///< the desktop's leave to come to the front; empty when there is none

    bool operator==(const InstanceMessage&) const = default;
};

/// No argument of a program is longer than 128 KiB on Linux, and no token nearly as long as the rest.
inline constexpr std::size_t maximumInstanceMessageSize = std::size_t{128 + 4} * 1024;

/// The bytes of a message, sent as one packet; nothing when they would be too many. No text in it can hold a
/// NUL, as they come from the arguments and the environment.
///
///   message = "tavojoin 1" NUL [ url ] NUL [ token ] NUL      ; url is a launch URL
std::optional<std::string> instanceMessageBytes(const InstanceMessage& message);

/// The message in such a packet; nothing when it is none.
std::optional<InstanceMessage> parseInstanceMessage(std::string_view bytes);

} // namespace join::platform
