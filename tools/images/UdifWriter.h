#pragma once

#include "images/PartitionedDisk.h"
#include "images/UdifTail.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace join::tools {

/// Writes a volume as an image in Apple's Universal Disk Image Format: chunks of 512 sectors, then the tables
/// of them and the trailer. A chunk that compression does not shrink is stored as it is, one of zeros not at
/// all.
class UdifWriter {
public:
    /// The stream must outlive the writer and stand at its beginning.
    UdifWriter(std::ostream& out, const UdifStyle& style) : out_(out) { contents_.style = style; }

    /// What is appended from here on belongs to a partition of this name. Without any, all is one. Throws
    /// std::runtime_error.
    void beginPartition(const std::string& name);

    /// The volume's next bytes. Throws std::runtime_error when the stream fails.
    void append(std::string_view volume);

    /// Once, after the last bytes, which fill a sector. Throws std::runtime_error.
    void finish();

    /// What has been written so far; once finished, of the whole image.
    const UdifContents& contents() const { return contents_; }

private:
    void flush();
    void writeChunk();
    void store(ChunkKind kind, std::string_view bytes);

    std::ostream& out_;
    std::string pending_;
    UdifContents contents_;
};

/// The bytes of the image of a volume that is at hand as a whole.
std::string udifOf(std::string_view volume, ChunkKind kind);

/// The same of a whole disk.
std::string udifOf(const std::vector<DiskPart>& disk, const UdifStyle& style);

} // namespace join::tools
