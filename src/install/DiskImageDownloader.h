#pragma once

#include "base/Format.h"
#include "platform/HttpClient.h"

#include <memory>
#include <string>
#include <string_view>

namespace join {

/// What differs between the disk images. The lines are those of the log.
struct DiskImage {
    std::string_view fileName;   ///< in the support folder
    std::string_view mountPoint; ///< its volume, by the name that the image itself gives it
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

/// Fetches one disk image into the support folder, mounts and detaches it. What is done with the volume is
/// its heirs'. Lives for the whole run. Main thread only.
class DiskImageDownloader : private platform::DownloadDelegate {
public:
    ~DiskImageDownloader() override;
    DiskImageDownloader(const DiskImageDownloader&) = delete;
    DiskImageDownloader& operator=(const DiskImageDownloader&) = delete;

    /// Whether a download is queued or runs.
    bool isBusy() const { return isBusy_; }

protected:
    explicit DiskImageDownloader(const DiskImage& image);

    /// Queues the start of the download to a later turn of the main loop. A second start while one is queued
    /// or a download runs is ignored: it would fetch the same image.
    void startDownloading();

    /// Where the image is fetched from, asked for when the download starts.
    virtual std::string url() const = 0;

    /// The download has ended, which the log has been told.
    virtual void downloadFailed(const platform::HttpError& error) = 0;
    virtual void downloadFinished() = 0;

    /// Run the disk-image tool and wait for it. Its status is in the log; a volume that is not there shows
    /// itself in the copies. A volume of that name which an earlier run left behind is taken away first.
    void mount();
    void detach();

    std::string imagePath() const;

    /// The path of something on the mounted volume.
    std::string onVolume(std::string_view name) const;

private:
    void downloadDidBegin() override;
    void downloadDidFail(const platform::HttpError& error) override;
    void downloadDidFinish() override;
    void start();
    void requestImage();

    const DiskImage& image_;
    bool isBusy_ = false;
    std::unique_ptr<platform::Download> download_;
};

} // namespace join
