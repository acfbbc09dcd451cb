#pragma once

#include "images/UdifTail.h"

#include <string>

namespace join::tools {

/// A chunk as it is stored in a kind of UDIF image; LZMA stands in an xz stream ("The .xz File Format").
/// Throws std::runtime_error.
std::string codedChunk(ChunkKind kind, const std::string& bytes);

/// Whether codedChunk() only wraps the bytes as literals: there is no encoder for ADC, LZFSE and LZMA here.
bool isStoredAsItIs(ChunkKind kind);

} // namespace join::tools
