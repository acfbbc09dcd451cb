#pragma once

#include "images/PartitionedDisk.h"
#include "images/UdifTail.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace join::tools {

/// Writes a volume as an image in Apple's Universal Disk Image Format: chunks of 512 sectors, then their
/// tables and the trailer. A chunk that compression does not shrink is stored as it is, a chunk of zeros not
/// at all.
class UdifWriter {
public:
    /// The stream is at its start and must outlive the writer.
    UdifWriter(std::ostream& out, const UdifStyle& style) : out_(out) { contents_.style = style; }

    /// Begins a partition of this name. Without any, everything is one partition. Throws std::runtime_error.
    void beginPartition(const std::string& name);

    /// Appends the volume's next bytes. Throws std::runtime_error if the stream fails.
    void append(std::string_view volume);

    /// Called once, after the last bytes, which fill a sector. Throws std::runtime_error.
    void finish();

    /// What has been written so far; after finish(), the whole image.
    const UdifContents& contents() const { return contents_; }

private:
    void flush();
    void writeChunk();
    void store(ChunkKind kind, std::string_view bytes);

    std::ostream& out_;
    std::string pending_;
    UdifContents contents_;
};

/// The image of a volume that is in memory as a whole.
std::string udifOf(std::string_view volume, ChunkKind kind);

/// The same for a whole disk.
std::string udifOf(const std::vector<DiskPart>& disk, const UdifStyle& style);

} // namespace join::tools
