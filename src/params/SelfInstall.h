#pragma once

namespace join {

/// Stores the delivered parameter file and installs copies of the running Join app. Logs what it does and
/// what fails. Main thread only.
void copyCurrentJoinAppFile();

/// Removes the installed Join app, including the one in the user's own folder.
void removeJoinCopies();

} // namespace join
