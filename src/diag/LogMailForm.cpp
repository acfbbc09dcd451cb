#include "diag/LogMailForm.h"

#include "base/Format.h"

#include <array>
#include <utility>

namespace join {

std::string logMailAttachmentHead(std::string_view path) {
    return formatted("\r\n--%@\r\nContent-Disposition: form-data; name=\"attachment\"; "
                     "filename=\"%@\"\r\nContent-Type: application/octet-stream\r\n\r\n",
                     logMailBoundary, path);
}

std::string logMailTexts(const Text& key, const Text& comment) {
    const std::array<std::pair<std::string_view, Text>, 6> texts = {{
        {"logSeverity", "CRITICAL"},
        {"key", key},
        {"logEventName", "JoinLogs"},
        {"subStr", "Mac Join.app!"},
        {"comment", comment},
        {"module", "MAC"},
    }};
    std::string parts;
    for (const auto& [name, value] : texts)
        parts += formatted("\r\n--%@\r\nContent-Disposition: form-data; name=\"%@\";\r\n\r\n%@",
                           logMailBoundary, name, value);
    return parts += formatted("\r\n--%@--\r\n", logMailBoundary);
}

} // namespace join
