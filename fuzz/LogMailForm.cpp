// The form that carries the logs. Its values have no line breaks: they come from launch URLs and entry
// fields.

#include "diag/LogMailForm.h"
#include "Target.h"
#include "url/LaunchUrl.h"

#include <vector>

namespace join::fuzz {

namespace {

/// The value of a text part.
std::string_view valueOf(std::string_view part) {
    const auto head = part.find("\r\n\r\n");
    require(head != std::string_view::npos);
    return part.substr(head + 4);
}

} // namespace

void tryOut(std::string_view input) {
    const std::string path = launchUrlText(takeText(input));
    const std::string key = launchUrlText(takeText(input));
    const std::string comment = launchUrlText(takeText(input));
    const std::string archive = launchUrlText(input);
    const std::string form = logMailAttachmentHead(path) + archive + logMailTexts(key, comment);

    // Nothing in the form is escaped, so a text that begins like the line between two parts ends its part.
    const std::string line = "--" + std::string(logMailBoundary);
    if (archive.starts_with(line) || key.starts_with(line) || comment.starts_with(line))
        return;
    const std::string delimiter = "\r\n" + line;
    const std::vector<std::string_view> parts = split(form, delimiter);
    require(parts.size() == 9); // text before the first delimiter, attachment, texts, closing line
    require(parts.front().empty() && parts.back() == "--\r\n");
    require(valueOf(parts[1]) == archive);
    require(valueOf(parts[3]) == key && valueOf(parts[6]) == comment);
}

} // namespace join::fuzz
