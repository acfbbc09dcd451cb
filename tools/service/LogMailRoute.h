#pragma once

#include "service/LogMailForm.h"
#include "service/Scenario.h"
#include "service/StopSignal.h"

#include <httplib.h>

#include <atomic>
#include <string>

namespace join::tools {

/// The route that takes log archives, and the ways in which it answers. The n-th form, from 1, is stored as
/// n.zip, the attachment's bytes if it has one, and n.txt, a line NAME=VALUE for the attachment's file name
/// and each value, with printable() values. Both are written before the answer, n.txt last.
class LogMailRoute {
public:
    /// Both outlive the route. Makes the scenario's folder. Throws std::runtime_error if it cannot.
    LogMailRoute(const Scenario& scenario, StopSignal& stop);

    /// Occupies the server's pre-routing handler. This object outlives the server's last answer.
    void addTo(httplib::Server& server);

private:
    void take(const httplib::Request& request, httplib::Response& response,
              const httplib::ContentReader& reader);
    void store(const LogMailForm& form);
    void answer(httplib::Response& response);

    const Scenario& scenario_;
    StopSignal& stop_;
    std::atomic<int> stored_ = 0;
};

} // namespace join::tools
