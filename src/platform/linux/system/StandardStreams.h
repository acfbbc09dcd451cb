#pragma once

namespace join::platform {

/// Opens the null device on every one of the descriptors 0, 1 and 2 that is closed, so that no file or socket
/// gets one of these numbers and with it what is meant for a standard stream. The first call of main.
void openMissingStandardStreams();

} // namespace join::platform
