#pragma once

#include "base/Text.h"

#include <string>
#include <string_view>

namespace join {

/// The log-mail form, a multipart/form-data body (RFC 7578) in the exact bytes that the service takes:
///
///   form       = [ attachment ] 6text closing
///   attachment = delimiter 'Content-Disposition: form-data; name="attachment"; filename="' path '"' CRLF
///                "Content-Type: application/octet-stream" CRLF CRLF bytes
///   text       = delimiter 'Content-Disposition: form-data; name="' name '";' CRLF CRLF value
///   delimiter  = CRLF "--" boundary CRLF
///   closing    = CRLF "--" boundary "--" CRLF
///
/// The texts are logSeverity, key, logEventName, subStr, comment and module, in this order. Values stand in
/// it as they are; an absent one as "(null)".
inline constexpr std::string_view logMailBoundary = "unique-consistent-string";

/// What stands before the bytes of an attached file of that path.
std::string logMailAttachmentHead(std::string_view path);

/// The text parts and the closing delimiter.
std::string logMailTexts(const Text& key, const Text& comment);

} // namespace join
