#pragma once

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "platform/linux/helpers/hdiutil/VolumeWriter.h"

#include <cstdint>
#include <string>

namespace join::platform::hdiutil {

/// A volume as it is on a disk, in a file that no path leads to and that goes away with its last descriptor.
/// Takes no room for what is zero.
class RawVolume {
public:
    /// The folder is a private one. Throws Exception when nothing can be made there.
    explicit RawVolume(const std::string& folder);

    /// Takes bytes from the source: skips some, keeps what follows, and reads to the end. Throws Exception
    /// when they are too few or more than so much room can hold.
    void fill(const ByteSource& source, const Extent& part, std::uint64_t room);

    /// Changes one byte.
    void patch(std::uint64_t place, char byte);

    ImageFile finish() { return ImageFile(std::move(file_)); }

private:
    Descriptor file_;
};

} // namespace join::platform::hdiutil
