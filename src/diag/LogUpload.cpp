#include "diag/LogUpload.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "diag/LogMailForm.h"
#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/Paths.h"
#include "platform/Services.h"
#include "platform/Tasks.h"
#include "platform/Utf8.h"
#include "session/JoinSessionDetails.h"

#include <utility>

namespace join {

using platform::services;

namespace {

/// Returns the answer as text, or an absent text if it is not UTF-8. An answer of the maximum size has been
/// cut off, perhaps within a character; the incomplete character is dropped.
Text textOf(std::string_view answer) {
    constexpr std::size_t longestBeginning = 3; // of a character, in bytes
    const bool isCut = answer.size() >= platform::PostRequest().maximumAnswerSize;
    for (std::size_t left = 0; left <= (isCut ? longestBeginning : 0); ++left)
        if (const auto text = answer.substr(0, answer.size() - left); platform::isUtf8(text))
            return Text(text);
    return std::nullopt;
}

/// Zips a folder into the archive in the temporary folder. Returns the archive's path even if zip failed.
std::string zipDirectoryWithPath(const std::string& folder) {
    constexpr auto method = "-[AppDelegate zipDirectoryWithPath:]";
    std::string archive;
    try {
        const std::string temporary = services().paths->temporary();
        log("%s : Temporary Directory : %@", method, temporary);
        archive = temporary + "/User.zip";
        platform::FileManager& files = *services().fileManager;
        if (files.exists(archive) && !files.remove(archive))
            log("%s : Existing Log file in Temp cannot be deleted : %@", method, archive);
        const platform::TaskResult result = services().tasks->run(
            {"/usr/bin/zip", {"-r", "-q", archive, ".", "-i", "*"}, folder, std::chrono::minutes(1)});
        if (result.exited && result.status == 0)
            log("%s : Task succeeded.", method);
        else
            log("%s : Task failed.", method);
    } catch (const std::exception& exception) {
        log("%s : **************** EXCEPTION ***************** : %@ ", method, exception.what());
    }
    return archive;
}

/// Starts the body with the attachment part of the log-mail form for a file. If the file cannot be read, the
/// part has no content.
void getFileDataWith(const std::string& path, platform::PostRequest& request) {
    constexpr auto method = "-[AppDelegate getFileDataWith:]";
    try {
        request.body = logMailAttachmentHead(path);
        request.file = services().fileManager->open(path);
        if (!request.file || request.file->size() == 0)
            log("%s : Nothing is attached, there is no readable archive : %@", method, path);
    } catch (const std::exception& exception) {
        log("%s : Exception occured in LogHandler.getFileDataWith() : %@ ", method, exception.what());
    }
}

} // namespace

std::string LogUpload::sendLogFiles(const Text& comment) {
    constexpr auto method = "-[AppDelegate sendLogFiles:]";
    try {
        const std::string folder = productLogFolder();
        platform::PostRequest request;
        request.url = formatted("%@://%@/api/v1/send_log_mail", "https", session().webServerName());
        log("%s : Logger URL : %@", method, request.url);
        receivedData_.clear();
        if (services().fileManager->exists(folder))
            getFileDataWith(zipDirectoryWithPath(folder), request);
        else
            log("%s : Nothing is attached, there is no folder : %@", method, folder);
        request.bodyBehindFile = logMailTexts(session().key(), comment);
        request.headers = {
            {"Content-Type", formatted("multipart/form-data; boundary=%@", logMailBoundary)},
            {"Content-Length", formatted("%lu", request.bodySize())},
        };
        // Shared, because queued work must be copyable.
        const auto queued = std::make_shared<platform::PostRequest>(std::move(request));
        services().mainQueue->enqueue([this, queued] { openUpload(std::move(*queued)); });
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
    }
    return response_;
}

void LogUpload::openUpload(platform::PostRequest request) {
    reportingExceptions("-[AppDelegate sendLogFiles:]_block_invoke", [&](std::string_view method) {
        if (underWay_ == 0)
            connections_.clear(); // each keeps its archive open
        auto connection = services().httpClient->connect(std::move(request), *this);
        if (!connection)
            return;
        connections_.push_back(std::move(connection));
        ++underWay_;
        log("%s : Log sending url connection established!! ", method);
        response_ = "true";
    });
}

void LogUpload::connectionDidReceiveResponse() { receivedData_.clear(); }

void LogUpload::connectionDidReceiveData(std::string_view data) { receivedData_ += data; }

void LogUpload::connectionDidFinishLoading() {
    constexpr auto method = "-[AppDelegate connectionDidFinishLoading:]";
    --underWay_;
    const Text text = textOf(receivedData_);
    log("%s : Succeeded! Received %lu bytes of data", method, receivedData_.size());
    log("%s : Received data %@", method, text);
    if (text == "SUCCESS")
        log("%s : Log File sent succesfully!", method);
    else
        log("%s : Join send log NSURLConnection failure Response : %@", method, text);
}

void LogUpload::connectionDidFail(const platform::HttpError& error) {
    --underWay_;
    log("%s : Join Log send NSURLConnection failed! Error - %@ %@",
        "-[AppDelegate connection:didFailWithError:]", error.description, error.failingUrl);
}

} // namespace join
