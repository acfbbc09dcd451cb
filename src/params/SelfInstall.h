#pragma once

namespace join {

/// Stores the delivered parameter file and installs copies of the running Join app. Logs what it does and
/// what fails. Returns false if the file is refused, because the administrator's policy does not allow the web
/// server that it names; then it counts as missing, and the one stored earlier stays. Main thread only.
bool copyCurrentJoinAppFile();

/// Removes the installed Join app, including the one in the user's own folder.
void removeJoinCopies();

} // namespace join
