#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Broken and hostile disk images, to try with them that nothing is mounted that should not be. What makes a
/// volume needs xorrisofs and throws std::runtime_error.
namespace join::tools {

/// Bytes that do not compress, the same ones each time.
std::string noise(std::size_t size);

/// A UDIF image whose block table claims 16 million chunks but holds few.
std::string withTooManyChunks(std::string image);

/// An image with one bit of one byte flipped. Throws std::out_of_range past its end.
std::string withFlippedByte(std::string image, std::size_t offset);

struct HostileImage {
    std::string name; ///< what is wrong with it, in letters and hyphens
    std::string bytes;
};

/// Images that are sound but hostile, those of HFS+ both as UDIF and as a bare volume. Their files aim for
/// places beside the folder where the volume is unpacked, or for the folder that the links point to.
std::vector<HostileImage> maliciousImages(const std::string& linkTarget);

} // namespace join::tools
