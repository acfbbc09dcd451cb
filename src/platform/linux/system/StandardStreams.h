#pragma once

namespace join::platform {

/// Opens the null device on each of the descriptors 0, 1 and 2 that is closed, so that no file or socket gets
/// one of these numbers and then receives what is meant for a standard stream. Must be the first call of
/// main.
void openMissingStandardStreams();

} // namespace join::platform
