#include "service/ImageRoutes.h"

#include "service/Answers.h"
#include "service/Connection.h"
#include "service/ImageFile.h"
#include "service/Query.h"

#include <algorithm>
#include <functional>
#include <memory>

namespace join::tools {
namespace {

constexpr const char* agentOfDeliveryHost = "/TavoMac.dmg";
constexpr const char* agentOfWebServer = "/agent/TavoMac.dmg";
constexpr const char* joinProgram = "/join-session";

constexpr const char* imageType = "application/x-apple-diskimage";

/// Opens an image and names its version: httplib then serves ranges of it by itself.
std::shared_ptr<ImageFile> opened(httplib::Response& response, const std::string& path) {
    auto file = std::make_shared<ImageFile>(path);
    response.set_header("ETag", '"' + std::to_string(file->size()) + '"');
    response.set_header("Accept-Ranges", "bytes");
    return file;
}

void sendWhole(httplib::Response& response, const std::string& path) {
    const auto file = opened(response, path);
    if (file->size() == 0) { // without a provider it has an announced length too
        response.set_content("", imageType);
        return;
    }
    response.set_content_provider(file->size(), imageType,
                                  [file](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                      return file->send(sink, offset, length);
                                  });
}

/// Announces all that was asked for, but after half of it does something else and ends.
void sendHalf(httplib::Response& response, const std::string& path, const std::function<void()>& then) {
    const auto file = opened(response, path);
    response.set_content_provider(file->size(), imageType,
                                  [file, then, end = std::size_t{0}](std::size_t offset, std::size_t length,
                                                                     httplib::DataSink& sink) mutable {
                                      if (end == 0)
                                          end = offset + length / 2;
                                      if (offset < end)
                                          return file->send(sink, offset, end - offset);
                                      then();
                                      return false;
                                  });
}

} // namespace

ImageRoutes::ImageRoutes(const Scenario& scenario, StopSignal& stop) : scenario_(scenario), stop_(stop) {
    for (const std::string& path : {scenario.agentImage, scenario.joinImage})
        if (!path.empty())
            const ImageFile readable(path);
}

void ImageRoutes::addTo(httplib::Server& server) {
    const auto answerAgent = [this](const Request& request, Response& response) {
        answer(request, response, scenario_.agentImage);
    };
    server.Get(agentOfDeliveryHost, answerAgent);
    server.Get(agentOfWebServer, answerAgent);
    server.Get(joinProgram, [this](const Request& request, Response& response) {
        if (gives(request, "key") && gives(request, "role", {"agent"}) && gives(request, "email"))
            answer(request, response, scenario_.joinImage);
        else
            response.status = 400;
    });
}

bool ImageRoutes::have(const std::string& path) {
    return path == agentOfDeliveryHost || path == agentOfWebServer || path == joinProgram;
}

void ImageRoutes::answer(const Request& request, Response& response, const std::string& path) {
    if (path.empty())
        response.status = 404;
    else if (isToFail())
        fail(request, response, path);
    else
        sendWhole(response, path);
}

void ImageRoutes::fail(const Request& request, Response& response, const std::string& path) {
    switch (scenario_.imageFault.value_or(ImageFault::status)) {
    case ImageFault::status:
        response.status = 500;
        break;
    case ImageFault::cut:
        sendHalf(response, path, [] {});
        break;
    case ImageFault::stall:
        sendHalf(response, path, [this] { waitUntilTheClientGoes(stop_); });
        break;
    case ImageFault::reset:
        Connection::current().close();
        break;
    case ImageFault::redirect:
        response.set_redirect("http://" + request.get_header_value("Host") + request.target);
        break;
    case ImageFault::html: {
        const Answer page = spoilt({}, Broken::html);
        response.set_content(page.body, page.contentType);
        break;
    }
    case ImageFault::garbage:
        response.set_content(spoilt({}, Broken::garbage).body, imageType);
        break;
    case ImageFault::endless:
        sendEndless(response, imageType);
        break;
    }
}

} // namespace join::tools
