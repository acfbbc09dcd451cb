#pragma once

#include "images/UdifTail.h"

#include <string>

namespace join::tools {

/// A chunk as it is stored in a kind of UDIF image; LZMA stands in an xz stream ("The .xz File Format").
/// Throws std::runtime_error.
std::string codedChunk(ChunkKind kind, const std::string& bytes);

/// Whether codedChunk() only wraps the bytes up, as literal ones: for ADC, LZFSE and LZMA there is no encoder
/// here.
bool isStoredAsItIs(ChunkKind kind);

} // namespace join::tools
