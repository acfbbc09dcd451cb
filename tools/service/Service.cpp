#include "service/Service.h"

#include "service/Connection.h"
#include "service/Query.h"

#include <sys/socket.h>

#include <fstream>
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
    if (ImageRoutes::have(request.path))
        record.userAgent = request.get_header_value("User-Agent");
    if (!connection.closed) {
        record.status = response.status;
        record.bytes = request.method == "HEAD" ? 0 : response.body.size() + connection.streamedBytes;
    }
    return record;
}

} // namespace

Service::Service(const Scenario& scenario, const Certificate& certificate, RequestLog& log)
    : scenario_(scenario), givenAnswer_(contents(scenario.answerFile)), images_(scenario_, stop_),
      logMail_(scenario_, stop_), server_(setUpTls(certificate)) {
    if (!server_.is_valid())
        throw std::runtime_error("cannot set up TLS");
    server_.set_socket_options(setSocketOptions);
    server_.set_keep_alive_max_count(1); // so that stopping does not wait for idle connections
    server_.set_logger([&log](const httplib::Request& request, const httplib::Response& response) {
        log.write(record(request, response));
    });
    bind();
    addRoutes();
    listen();
}

Service::~Service() {
    stop_.stop();
    server_.stop();
}

void Service::bind() {
    if (scenario_.port == 0)
        port_ = server_.bind_to_any_port(loopback);
    else
        port_ = server_.bind_to_port(loopback, scenario_.port) ? scenario_.port : -1;
    if (port_ <= 0)
        throw std::runtime_error("cannot listen on port " + std::to_string(scenario_.port));
    if (scenario_.cdnLink == ownHost)
        scenario_.cdnLink = "localhost:" + std::to_string(port_);
}

void Service::listen() {
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
    images_.addTo(server_);
    logMail_.addTo(server_);
}

void Service::answerCheck(httplib::Response& response, const Answer& sound) {
    stop_.wait(scenario_.delay);
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

} // namespace join::tools
