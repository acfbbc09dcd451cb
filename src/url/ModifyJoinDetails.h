#pragma once

namespace join {

/// Updates the join details file from the session state. Logs what it does and what fails. Main thread only.
void modifyJoinDetails();

} // namespace join
