#pragma once

#include "service/Answers.h"
#include "service/Certificate.h"
#include "service/RequestLog.h"
#include "service/Scenario.h"

#include <httplib.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <string>

namespace join::tools {

/// A stand-in of the web service: HTTPS on 127.0.0.1. It answers from when it is made until it is destroyed,
/// on threads of its own. A route is added in addRoutes.
class Service {
public:
    /// The log outlives the service. Throws std::runtime_error when the port is taken or the answer's file
    /// cannot be read.
    Service(const Scenario& scenario, const Certificate& certificate, RequestLog& log);

    /// Requests under way end at once.
    ~Service();

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    int port() const { return port_; }

private:
    void addRoutes();
    void listen();

    /// Answers a check in the scenario's way.
    void answerCheck(httplib::Response& response, const Answer& sound);
    void waitForDelay();

    const Scenario scenario_;
    const std::string givenAnswer_;
    httplib::SSLServer server_;
    int port_ = 0;

    std::mutex mutex_;
    std::condition_variable stopping_;
    bool isStopping_ = false;

    std::future<bool> listening_;
};

} // namespace join::tools
