#pragma once

namespace join {

/// Asks the web server about the session. Main thread only, but getInstance() is serialised.
class ApiHandler {
public:
    /// Returns the one instance, created on the first call, or nullptr if that failed, which is logged.
    static ApiHandler* getInstance();

    /// Sends the session check, blocks until it has ended, and writes the answer into the session state.
    /// Returns true if an answer with status 200 arrived and was processed.
    bool checkSessionApi();
};

} // namespace join
