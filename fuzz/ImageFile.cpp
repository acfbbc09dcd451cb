// Reads of an image at places that it names itself: eight bytes for the place, four for the size, and then
// the image.

#include "platform/linux/helpers/hdiutil/ImageFile.h"
#include "Target.h"

#include <sys/mman.h>

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform;
    if (input.size() < 12)
        return;
    const std::uint64_t place = hdiutil::bigEndian(input, 0, 8);
    const std::size_t size = hdiutil::bigEndian(input, 8, 4);
    input.remove_prefix(12);
    const Descriptor memory(::memfd_create("image", MFD_CLOEXEC));
    require(memory && writeAll(memory.get(), input));
    const hdiutil::ImageFile image("/proc/self/fd/" + std::to_string(memory.get()));
    require(image.size() == input.size());
    require(image.read(place, size) ==
            (place < input.size() ? input.substr(place, size) : std::string_view()));
}

} // namespace join::fuzz
