#pragma once

#include "platform/linux/helpers/hdiutil/ImageKind.h"
#include "platform/linux/process/ChildProcess.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace join::platform::hdiutil {

/// Where distributions put the 7-Zip that reads disk images; the PATH is never searched.
inline const std::vector<std::string> placesOf7zz{"/usr/bin/7zz", "/usr/lib/7zip/7zz", "/usr/lib/7zip/7z",
                                                  "/usr/local/bin/7zz"};

/// The first of the places that holds the program itself, or else a script that starts it. Throws Exception
/// when none holds anything that can be run.
std::string pathOf7zz(const std::vector<std::string>& places = placesOf7zz);

/// What 7zz does with one image that is open. It sees that very file, whatever its path means by then. All
/// throw Exception, also when interrupted.
class SevenZip {
public:
    /// The descriptor and the interruption must outlive this and what it gives.
    SevenZip(std::string program, int image, ImageKind kind, const Interruption& interruption);

    /// What `7zz l -slt` prints about the files in the volume, or the partitions in an image of Apple's
    /// format. Refuses more text than any sane volume makes.
    std::string list() const;

    /// Calls the function with the bytes of all of those, one after the other, in the order of the listing,
    /// and nothing else. 7zz writes nothing, so no name or link in the image can lead anywhere.
    void open(const std::function<void(const ByteSource&)>& take) const;

    /// Starts to unpack the whole image for nothing but to compare its checksums. Ends with status 0 when
    /// they are right. open() does not notice all that is wrong.
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
