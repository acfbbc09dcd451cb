#pragma once

#include "base/Format.h"
#include "platform/HttpClient.h"

#include <memory>
#include <string>
#include <string_view>

namespace join {

class TavoJoinWindowHandler;

/// What differs between the disk images. The formats are those of log lines.
struct DiskImage {
    std::string_view fileName;   ///< in the support folder
    std::string_view mountPoint; ///< the image's volume, by the name that the image gives it
    Format<std::string> urlLine;
    Format<Text> systemNameLine;
    Format<Text> systemVersionLine;
    std::string_view notCreatedLine;
    std::string_view busyLine;
    std::string_view beganLine;
    Format<std::string, std::string> failedLine; ///< description and URL
    std::string_view finishedLine;
    Format<int> mountedLine;
    Format<int> detachedLine;
    Format<const char*> detachExceptionLine;
};

/// Downloads one disk image into the support folder, mounts and detaches it. Subclasses use the volume. Lives
/// for the whole run. Main thread only.
class DiskImageDownloader : private platform::DownloadDelegate {
public:
    DiskImageDownloader(const DiskImageDownloader&) = delete;
    DiskImageDownloader& operator=(const DiskImageDownloader&) = delete;

    /// Returns whether a download is queued or running.
    bool isBusy() const { return isBusy_; }

protected:
    /// The progress window shows how far the download has got; it must outlive this object.
    DiskImageDownloader(const DiskImage& image, TavoJoinWindowHandler& joinInfoWindow)
        : joinInfoWindow_(joinInfoWindow), image_(image) {}

    /// Queues the start of the download for a later turn of the main loop. Ignores a second start while one
    /// is queued or a download is running: it would download the same image.
    void startDownloading();

    /// Returns where to download the image from. Called when the download starts.
    virtual std::string url() const = 0;

    /// Called when the download has ended and that has been logged.
    virtual void downloadFailed(const platform::HttpError& error) = 0;
    virtual void downloadFinished() = 0;

    /// Run the disk-image tool and wait for it. Its status is only logged: a missing volume makes the copies
    /// fail. mount() first detaches a volume of the same name left behind by an earlier run.
    void mount();
    void detach();

    std::string imagePath() const;

    /// Returns the path of something on the mounted volume.
    std::string onVolume(std::string_view name) const;

    TavoJoinWindowHandler& joinInfoWindow_;

private:
    void downloadDidContinue(std::uint64_t kept) override;
    void downloadDidBegin() override;
    void downloadDidReceive(std::uint64_t received, std::uint64_t announced) override;
    void downloadDidFail(const platform::HttpError& error) override;
    void downloadDidFinish() override;
    void downloadHasEnded();
    void start();
    void requestImage();

    const DiskImage& image_;
    bool isBusy_ = false;
    std::unique_ptr<platform::Download> download_;
};

} // namespace join
