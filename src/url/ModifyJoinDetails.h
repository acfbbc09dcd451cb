#pragma once

namespace join {

/// Brings the join details file in line with the session state. Logs what it does and what fails. Main thread
/// only.
void modifyJoinDetails();

} // namespace join
