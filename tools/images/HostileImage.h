#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Broken and hostile disk images, to try with them that nothing is mounted that should not be. Volumes are
/// bare HFS+; udifOf() (images/UdifWriter.h) makes an image of one, with all checksums right. What makes a
/// volume needs xorrisofs and throws std::runtime_error.
namespace join::tools {

/// A volume "Harmless": a program Tool.app/Contents/MacOS/tool, some text that compresses and a file of noise
/// that does not.
std::string harmlessVolume();

/// The first half of an image.
std::string cutInTheMiddle(std::string_view image);

/// An image with one bit of one byte turned round. Throws std::out_of_range past its end.
std::string withFlippedByte(std::string image, std::size_t offset);

/// A UDIF image whose trailer says that the property list lies behind the end.
std::string withTrailerPointingOutside(std::string image);

/// A UDIF image whose block table claims 16 million chunks but holds few.
std::string withTooManyChunks(std::string image);

/// What is wrong with the first chunk: its data lies behind the end, is longer than the image, lies so that
/// offset and size overflow, or fills more sectors than the volume has.
enum class ChunkFault { offset, size, overflow, sectors };

/// A zlib UDIF image of a volume with such a chunk.
std::string withChunkOutside(std::string_view volume, ChunkFault fault);

/// A whole UDIF image of few kilobytes whose only file holds so many zero bytes. Takes some seconds
/// for a gigabyte.
std::string zeroBomb(std::uint64_t size);

/// A volume of this name (at most 32 bytes), whatever it holds: separators, "..".
std::string volumeNamed(std::string_view name);

/// A volume with one folder of this name, in ASCII and whatever it holds, and a file "payload" in it.
std::string volumeWithFolderNamed(std::string_view name);

/// The same as an ISO volume, where a separator in the name is left standing.
std::string isoWithFolderNamed(std::string_view name);

/// An ISO volume of this name, whatever it holds.
std::string isoNamed(const std::string& name);

/// A volume with a link "way" and a folder "way" beside it in which a file stands: what follows the link
/// writes that file where the link points to.
std::string volumeWithFileBehindLink(const std::string& target, const std::string& file);

/// What a captive portal sends in place of an image.
std::string htmlPage();

struct HostileImage {
    std::string name; ///< what is wrong with it, in letters and hyphens
    std::string bytes;
};

/// Images that cannot be mounted at all: damaged, or none.
std::vector<HostileImage> damagedImages();

/// Images that are sound but mean harm, those of HFS+ both as UDIF and as a bare volume. Their files want to
/// get beside the place where the volume is unpacked, or into the folder that the links point to.
std::vector<HostileImage> maliciousImages(const std::string& linkTarget);

} // namespace join::tools
