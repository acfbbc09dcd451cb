#pragma once

namespace join {

/// Operations on the join parameter files. Each logs what it does and what fails. Main thread only.

/// Reads the support folder's parameter file into the session state, which does not change if there is no
/// usable file.
void readJoinParameters();

/// Creates the join details file of a first run from the delivered parameter file.
void createTavoJoinDetails();

/// Rewrites the parameter file from the session state, marked as belonging to a later run.
void rewriteJoinParameters();

} // namespace join
