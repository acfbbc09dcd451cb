#pragma once

#include "images/UdifTail.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace join::tools {

/// Writes a volume as an image in Apple's Universal Disk Image Format: chunks of 512 sectors, then the table
/// of them and the trailer. A chunk that compression does not shrink is stored as it is, one of zeros not at
/// all.
class UdifWriter {
public:
    /// The stream must outlive the writer and stand at its beginning.
    UdifWriter(std::ostream& out, ChunkKind kind) : out_(out), kind_(kind) {}

    /// The volume's next bytes. Throws std::runtime_error when the stream fails.
    void append(std::string_view volume);

    /// Once, after the last bytes, which fill a sector. Throws std::runtime_error.
    void finish();

    /// What has been written so far; once finished, of the whole image.
    const UdifContents& contents() const { return contents_; }

private:
    void writeChunk();
    void store(ChunkKind kind, std::string_view bytes);

    std::ostream& out_;
    ChunkKind kind_;
    std::string pending_;
    UdifContents contents_;
};

/// The bytes of the image of a volume that is at hand as a whole.
std::string udifOf(std::string_view volume, ChunkKind kind);

} // namespace join::tools
