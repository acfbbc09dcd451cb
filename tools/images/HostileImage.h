#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Broken and hostile disk images, to try with them that nothing is mounted that should not be. What makes a
/// volume needs xorrisofs and throws std::runtime_error.
namespace join::tools {

/// The first half of an image.
std::string cutInTheMiddle(std::string_view image);

/// An image with one bit of one byte flipped. Throws std::out_of_range past its end.
std::string withFlippedByte(std::string image, std::size_t offset);

/// A UDIF image whose trailer places the property list past the end.
std::string withTrailerPointingOutside(std::string image);

/// The page that a captive portal sends in place of an image.
std::string htmlPage();

struct HostileImage {
    std::string name; ///< what is wrong with it, in letters and hyphens
    std::string bytes;
};

/// Images that cannot be mounted at all: damaged, or not images.
std::vector<HostileImage> damagedImages();

/// Images that are sound but hostile, those of HFS+ both as UDIF and as a bare volume. Their files aim for
/// places beside the folder where the volume is unpacked, or for the folder that the links point to.
std::vector<HostileImage> maliciousImages(const std::string& linkTarget);

} // namespace join::tools
