#pragma once

#include "service/Scenario.h"
#include "service/StopSignal.h"

#include <httplib.h>

#include <atomic>
#include <string>

namespace join::tools {

/// The routes that deliver disk images, and the ways in which they fail.
class ImageRoutes {
public:
    /// Both outlive the routes. Throws std::runtime_error when an image of the scenario cannot be read.
    ImageRoutes(const Scenario& scenario, StopSignal& stop);

    /// This object outlives the server's last answer.
    void addTo(httplib::Server& server);

    /// Whether one of the routes has that path.
    static bool have(const std::string& path);

private:
    using Request = httplib::Request;
    using Response = httplib::Response;

    /// Answers with the image at the path, opened anew for each request, or with 404 if the path is empty.
    void answer(const Request& request, Response& response, const std::string& path);
    void fail(const Request& request, Response& response, const std::string& path);

    bool isToFail() { return asked_++ < scenario_.failingImages.value_or(0); }

    const Scenario& scenario_;
    StopSignal& stop_;
    std::atomic<int> asked_ = 0; ///< requests for an image that exists
};

} // namespace join::tools
