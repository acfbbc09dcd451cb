#include "service/Service.h"

#include "service/Connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>

namespace join::tools {
namespace {

constexpr const char* loopback = "127.0.0.1";
constexpr std::size_t hugeSize = 100'000'000;

std::string contents(const std::string& path) {
    if (path.empty())
        return {};
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return bytes;
}

std::function<bool(SSL_CTX&)> setUpTls(const Certificate& certificate) {
    return [&](SSL_CTX& context) {
        Connection::follow(context);
        return SSL_CTX_use_certificate(&context, certificate.certificate()) == 1 &&
               SSL_CTX_use_PrivateKey(&context, certificate.key()) == 1;
    };
}

/// The library's own options would let two services share a port.
void setSocketOptions(socket_t socket) {
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

RequestRecord record(const httplib::Request& request, const httplib::Response& response) {
    const Connection& connection = Connection::current();
    RequestRecord record{.method = request.method, .target = request.target};
    if (!connection.closed) {
        record.status = response.status;
        record.bytes = request.method == "HEAD" ? 0 : response.body.size() + connection.streamedBytes;
    }
    return record;
}

/// Whether the query gives a name, with one of the values if any are told.
bool gives(const httplib::Request& request, const char* name,
           std::initializer_list<const char*> values = {}) {
    if (!request.has_param(name))
        return false;
    return values.size() == 0 ||
           std::find(values.begin(), values.end(), request.get_param_value(name)) != values.end();
}

} // namespace

Service::Service(const Scenario& scenario, const Certificate& certificate, RequestLog& log)
    : scenario_(scenario), givenAnswer_(contents(scenario.answerFile)), server_(setUpTls(certificate)) {
    if (!server_.is_valid())
        throw std::runtime_error("cannot set up TLS");
    server_.set_socket_options(setSocketOptions);
    server_.set_keep_alive_max_count(1); // so that stopping does not wait for idle connections
    server_.set_logger([&log](const httplib::Request& request, const httplib::Response& response) {
        log.write(record(request, response));
    });
    addRoutes();
    listen();
}

Service::~Service() {
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
    }
    stopping_.notify_all();
    server_.stop();
}

void Service::listen() {
    if (scenario_.port == 0)
        port_ = server_.bind_to_any_port(loopback);
    else
        port_ = server_.bind_to_port(loopback, scenario_.port) ? scenario_.port : -1;
    if (port_ <= 0)
        throw std::runtime_error("cannot listen on port " + std::to_string(scenario_.port));

    listening_ = std::async(std::launch::async, [this] { return server_.listen_after_bind(); });
    while (!server_.is_running()) // stopping it earlier would have no effect
        if (listening_.wait_for(std::chrono::milliseconds(1)) == std::future_status::ready)
            throw std::runtime_error("cannot listen");
}

void Service::addRoutes() {
    server_.Get("/api/public/json/meetings/checkSessionID", [this](const httplib::Request& request,
                                                                   httplib::Response& response) {
        if (gives(request, "key") && gives(request, "installed-version") && gives(request, "os", {"mac"}))
            answerCheck(response, versionAnswer(scenario_));
        else
            response.status = 400;
    });
    server_.Get("/api/public/xml/meetings/checkSessionID",
                [this](const httplib::Request& request, httplib::Response& response) {
                    if (gives(request, "key") && gives(request, "role", {"agent"}) &&
                        gives(request, "sessionType", {"Meeting", "Unattended", "Fendel"}))
                        answerCheck(response, keyAnswer(scenario_, request.get_param_value("key")));
                    else
                        response.status = 400;
                });
}

void Service::answerCheck(httplib::Response& response, const Answer& sound) {
    waitForDelay();
    response.status = scenario_.status;
    if (!scenario_.answerFile.empty()) {
        response.set_content(givenAnswer_, sound.contentType);
        return;
    }
    switch (scenario_.broken) {
    case Broken::reset:
        Connection::current().close();
        break;
    case Broken::cut:
        sendCut(response, sound.contentType, sound.body);
        break;
    case Broken::huge:
        sendHuge(response, sound.contentType, hugeSize);
        break;
    case Broken::endless:
        sendEndless(response, sound.contentType);
        break;
    default:
        const Answer answer = spoilt(sound, scenario_.broken);
        response.set_content(answer.body, answer.contentType);
    }
}

void Service::waitForDelay() {
    std::unique_lock lock(mutex_);
    stopping_.wait_for(lock, scenario_.delay, [this] { return isStopping_; });
}

} // namespace join::tools
