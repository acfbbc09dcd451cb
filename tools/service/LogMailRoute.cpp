#include "service/LogMailRoute.h"

#include "service/Answers.h"
#include "service/Connection.h"
#include "service/Printable.h"
#include "service/WholeFile.h"

#include <filesystem>

namespace join::tools {
namespace {

constexpr const char* path = "/api/v1/send_log_mail";
constexpr const char* contentType = "Content-Type";
constexpr const char* text = "text/plain";
constexpr std::size_t maximumBody = std::size_t{256} << 20U;
constexpr std::chrono::seconds slowness(3);

/// Hides a multipart body from the library, which would parse it and lose bytes that it does not understand:
/// a leading blank, which no header read from a connection has, keeps the library from recognising it.
constexpr char hidingMark = ' ';

httplib::Server::HandlerResponse hideContentType(const httplib::Request& request,
                                                 httplib::Response& /*response*/) {
    if (request.path == path) {
        auto& headers = const_cast<httplib::Request&>(request).headers; // the library's own is not const
        const auto [begin, end] = headers.equal_range(contentType);
        for (auto header = begin; header != end; ++header)
            header->second.insert(0, 1, hidingMark);
    }
    return httplib::Server::HandlerResponse::Unhandled;
}

bool hasFormType(const httplib::Request& request) {
    return request.get_header_value_count(contentType) == 1 &&
           request.get_header_value(contentType) ==
               hidingMark + ("multipart/form-data; boundary=" + std::string(logMailBoundary));
}

bool announces(const httplib::Request& request, std::size_t length) {
    return request.get_header_value_count("Content-Length") == 1 &&
           request.get_header_value("Content-Length") == std::to_string(length);
}

std::string lines(const LogMailForm& form) {
    std::string result;
    if (form.attachment)
        result += "filename=" + printable(form.attachment->fileName) + '\n';
    for (std::size_t i = 0; i < logMailNames.size(); ++i)
        result += std::string(logMailNames[i]) + '=' + printable(form.values[i]) + '\n';
    return result;
}

} // namespace

LogMailRoute::LogMailRoute(const Scenario& scenario, StopSignal& stop) : scenario_(scenario), stop_(stop) {
    if (!scenario.logMailFolder.empty())
        std::filesystem::create_directories(scenario.logMailFolder);
}

void LogMailRoute::addTo(httplib::Server& server) {
    server.set_pre_routing_handler(hideContentType);
    server.Post(path, [this](const httplib::Request& request, httplib::Response& response,
                             const httplib::ContentReader& reader) { take(request, response, reader); });
}

void LogMailRoute::take(const httplib::Request& request, httplib::Response& response,
                        const httplib::ContentReader& reader) {
    std::string body;
    const bool isWhole = reader([&](const char* bytes, std::size_t size) {
        if (size > maximumBody - body.size())
            return false;
        body.append(bytes, size);
        return true;
    });
    const auto form = parseLogMailForm(body);
    if (!isWhole || !hasFormType(request) || !announces(request, body.size()) || !form) {
        response.status = 400;
        return;
    }
    store(*form);
    answer(response);
}

void LogMailRoute::store(const LogMailForm& form) {
    if (scenario_.logMailFolder.empty())
        return;
    const std::string place = scenario_.logMailFolder + '/' + std::to_string(++stored_);
    if (form.attachment)
        writeWholeFile(place + ".zip", form.attachment->bytes);
    writeWholeFile(place + ".txt", lines(form));
}

void LogMailRoute::answer(httplib::Response& response) {
    switch (scenario_.logMail) {
    case LogMailAnswer::slow:
        stop_.wait(slowness);
        [[fallthrough]];
    case LogMailAnswer::success:
        response.set_content("SUCCESS", text);
        break;
    case LogMailAnswer::lineFeed:
        response.set_content("SUCCESS\n", text);
        break;
    case LogMailAnswer::error: {
        const Answer page = spoilt({}, Broken::html);
        response.status = 500;
        response.set_content(page.body, page.contentType);
        break;
    }
    case LogMailAnswer::empty:
        response.set_content("", text);
        break;
    case LogMailAnswer::reset:
        Connection::current().close();
        break;
    case LogMailAnswer::stall:
        waitUntilTheClientGoes(stop_);
        break;
    case LogMailAnswer::cut:
        sendCut(response, text, "SUCCESS");
        break;
    case LogMailAnswer::garbage:
        response.set_content(spoilt({}, Broken::garbage).body, text);
        break;
    case LogMailAnswer::endless:
        sendEndless(response, text);
        break;
    }
}

} // namespace join::tools
