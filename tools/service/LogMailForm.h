#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace join::tools {

/// The form that carries a log archive: multipart/form-data (RFC 7578) as its sender writes it. With CRLF for
/// the end of a line and B for the boundary, the body is
///
///     CRLF --B CRLF
///     Content-Disposition: form-data; name="attachment"; filename="FILE NAME" CRLF
///     Content-Type: application/octet-stream CRLF
///     CRLF
///     BYTES
///
/// or nothing in place of this part; then for each name of logMailNames, in order,
///
///     CRLF --B CRLF
///     Content-Disposition: form-data; name="NAME"; CRLF
///     CRLF
///     VALUE
///
/// and CRLF --B-- CRLF. BYTES and VALUE do not hold CRLF --B, FILE NAME neither CR nor LF. All views are into
/// the body.
struct LogMailForm {
    struct Attachment {
        std::string_view fileName;
        std::string_view bytes;
    };

    std::optional<Attachment> attachment;
    std::array<std::string_view, 6> values; ///< in the order of logMailNames
};

inline constexpr std::string_view logMailBoundary = "unique-consistent-string";

inline constexpr std::array<std::string_view, 6> logMailNames{"logSeverity", "key",     "logEventName",
                                                              "subStr",      "comment", "module"};

/// The form, if the body is exactly one form.
std::optional<LogMailForm> parseLogMailForm(std::string_view body);

} // namespace join::tools
