#include "install/DiskImageDownloader.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "platform/Application.h"
#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/PropertyLists.h"
#include "platform/Services.h"
#include "platform/Tasks.h"
#include "session/ProcessSlots.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

using platform::services;

namespace {

Text textOf(const platform::Value& list, std::string_view key) {
    const platform::Value* value = list.member(key);
    return value && value->text() ? Text(*value->text()) : std::nullopt;
}

/// Returns the system's name and version, each absent if the system does not tell it.
std::pair<Text, Text> systemName() {
    const auto file = files().read(platform::systemVersionPath);
    const auto list = file ? services().propertyLists->parse(*file) : std::nullopt;
    return {list ? textOf(*list, "ProductName") : Text(), list ? textOf(*list, "ProductVersion") : Text()};
}

int runDiskImageTool(const std::string& verb, const std::string& subject) {
    return services().tasks->run({"/usr/bin/hdiutil", {verb, subject}, "/"}).status;
}

} // namespace

void DiskImageDownloader::startDownloading() {
    if (isBusy_) {
        writeLog(image_.busyLine);
        return;
    }
    isBusy_ = true;
    joinInfoWindow_.showInstallation();
    services().mainQueue->enqueue([this] { start(); });
}

void DiskImageDownloader::start() {
    download_.reset();
    reportingExceptions("-[DiskImageDownloader start]", [this] { requestImage(); });
    isBusy_ = download_ != nullptr;
}

void DiskImageDownloader::requestImage() {
    platform::DownloadRequest request;
    request.url = url();
    request.destination = imagePath();
    log(image_.urlLine, request.url);
    const auto [name, version] = systemName();
    log(image_.systemNameLine, name);
    log(image_.systemVersionLine, version);
    request.userAgent = formatted("%@ %@", name, version);
    download_ = services().httpClient->download(request, *this);
    if (download_)
        log("destination path : %@", request.destination);
    else
        writeLog(image_.notCreatedLine);
}

void DiskImageDownloader::downloadDidBegin() { writeLog(image_.beganLine); }

void DiskImageDownloader::downloadDidContinue(std::uint64_t kept) {
    log("%s : Download continues, bytes kept : %lu", "-[DiskImageDownloader downloadDidContinue:]", kept);
}

void DiskImageDownloader::downloadDidReceive(std::uint64_t received, std::uint64_t announced) {
    joinInfoWindow_.showDownload(this, received, announced);
}

void DiskImageDownloader::downloadHasEnded() {
    isBusy_ = false;
    joinInfoWindow_.endDownload(this);
}

void DiskImageDownloader::downloadDidFail(const platform::HttpError& error) {
    downloadHasEnded();
    log(image_.failedLine, error.description, error.failingUrl);
    downloadFailed(error);
}

void DiskImageDownloader::downloadDidFinish() {
    downloadHasEnded();
    writeLog(image_.finishedLine);
    downloadFinished();
}

void DiskImageDownloader::mount() {
    const std::string mountPoint(image_.mountPoint);
    if (files().exists(mountPoint))
        runDiskImageTool("detach", mountPoint);
    log(image_.mountedLine, runDiskImageTool("mount", imagePath()));
}

void DiskImageDownloader::detach() {
    try {
        log(image_.detachedLine, runDiskImageTool("detach", std::string(image_.mountPoint)));
    } catch (const std::exception& exception) {
        log(image_.detachExceptionLine, exception.what());
    }
}

std::string DiskImageDownloader::imagePath() const { return supportFolder().append(image_.fileName); }

std::string DiskImageDownloader::onVolume(std::string_view name) const {
    return appendingPathComponent(image_.mountPoint, name);
}

} // namespace join
