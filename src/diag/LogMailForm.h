#pragma once

#include "base/Text.h"

#include <string>
#include <string_view>

namespace join {

/// The log-mail form, a multipart/form-data body (RFC 7578), in exactly the bytes that the service accepts:
///
///   form       = [ attachment ] 6text closing
///   attachment = delimiter 'Content-Disposition: form-data; name="attachment"; filename="' path '"' CRLF
///                "Content-Type: application/octet-stream" CRLF CRLF bytes
///   text       = delimiter 'Content-Disposition: form-data; name="' name '";' CRLF CRLF value
///   delimiter  = CRLF "--" boundary CRLF
///   closing    = CRLF "--" boundary "--" CRLF
///
/// The texts are logSeverity, key, logEventName, subStr, comment and module, in this order. Values are
/// written as they are, absent ones as "(null)".
inline constexpr std::string_view logMailBoundary = "unique-consistent-string";

/// Returns what precedes the bytes of an attached file with that path.
std::string logMailAttachmentHead(std::string_view path);

/// Returns the text parts and the closing delimiter.
std::string logMailTexts(const Text& key, const Text& comment);

} // namespace join
