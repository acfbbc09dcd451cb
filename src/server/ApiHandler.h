#pragma once

namespace join {

/// Asks the web server about the session. Main thread only; its creation is serialised.
class ApiHandler {
public:
    /// The one instance, made on the first call; nullptr when that failed, which the log then says.
    static ApiHandler* getInstance();

    /// Sends the session check and writes the answer into the session state; blocks until it has ended. True
    /// when an answer with status 200 was received and walked.
    bool checkSessionApi();
};

} // namespace join
