#pragma once

#include "platform/linux/helpers/hdiutil/ImageKind.h"
#include "platform/linux/process/ChildProcess.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace join::platform::hdiutil {

/// Where distributions install the 7-Zip that reads disk images; the PATH is never searched.
inline const std::vector<std::string> placesOf7zz{"/usr/bin/7zz", "/usr/lib/7zip/7zz", "/usr/lib/7zip/7z",
                                                  "/usr/local/bin/7zz"};

/// Returns the first of the places that holds the program itself: a script could not start it, confined as it
/// is. Throws Exception if there is none.
std::string pathOf7zz(const std::vector<std::string>& places = placesOf7zz);

/// Runs 7zz on one open image. 7zz sees that very file, whatever its path means by then, and besides that
/// only the system's libraries: whatever the image makes it do, it can open no other file, reach no network
/// and start no program. Every operation throws Exception, also when interrupted.
class SevenZip {
public:
    /// The descriptor and the interruption must outlive this object and the processes it returns.
    SevenZip(std::string program, int image, ImageKind kind, const Interruption& interruption);

    /// Returns the output of `7zz l -slt` about the files in the volume, or about the partitions in an image
    /// of Apple's format. Refuses more text than any sane volume produces.
    std::string list() const;

    /// Calls the function with the contents of all of these, one after the other, in the order of the
    /// listing, and nothing else. 7zz writes no files, so no name or link in the image can lead anywhere.
    void open(const std::function<void(const ByteSource&)>& take) const;

    /// Starts to unpack the whole image only to compare its checksums. The process exits with status 0 if
    /// they are correct. open() does not notice every error.
    std::unique_ptr<ChildProcess> check() const;

private:
    std::unique_ptr<ChildProcess> start(std::vector<std::string> arguments,
                                        ChildProcess::Output output = ChildProcess::Output::read) const;

    std::string program_;
    int image_;
    ImageKind kind_;
    const Interruption& interruption_;
};

} // namespace join::platform::hdiutil
