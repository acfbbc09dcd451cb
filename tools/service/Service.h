#pragma once

#include "service/Answers.h"
#include "service/Certificate.h"
#include "service/ImageRoutes.h"
#include "service/LogMailRoute.h"
#include "service/RequestLog.h"
#include "service/Scenario.h"
#include "service/StopSignal.h"

#include <httplib.h>

#include <future>
#include <string>

namespace join::tools {

/// A stand-in for the web service: HTTPS on 127.0.0.1. It answers as long as it exists, on threads of its
/// own. Routes are added in addRoutes, those of disk images in ImageRoutes, that of the log archives in
/// LogMailRoute.
class Service {
public:
    /// The log outlives the service. Throws std::runtime_error if the port is taken or a file to answer with
    /// cannot be read.
    Service(const Scenario& scenario, const Certificate& certificate, RequestLog& log);

    /// Ends requests under way at once.
    ~Service();

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    int port() const { return port_; }

private:
    void bind();
    void addRoutes();
    void listen();

    /// Answers a check in the scenario's way.
    void answerCheck(httplib::Response& response, const Answer& sound);

    Scenario scenario_; ///< complete once the port is bound
    const std::string givenAnswer_;
    StopSignal stop_;
    ImageRoutes images_;
    LogMailRoute logMail_;
    httplib::SSLServer server_;
    int port_ = 0;

    std::future<bool> listening_;
};

} // namespace join::tools
