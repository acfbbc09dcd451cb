#include "service/LogMailForm.h"

#include <cstddef>
#include <string>

namespace join::tools {
namespace {

const std::string delimiter = "\r\n--" + std::string(logMailBoundary);
const std::string disposition = delimiter + "\r\nContent-Disposition: form-data; name=";
constexpr std::string_view attachmentName = "\"attachment\"; filename=\"";
constexpr std::string_view attachmentType = "\"\r\nContent-Type: application/octet-stream\r\n\r\n";

/// The part of the body that has not been read yet.
class Rest {
public:
    explicit Rest(std::string_view text) : text_(text) {}

    bool isEmpty() const { return text_.empty(); }

    /// Skips the text if it comes next.
    bool pass(std::string_view text) {
        if (!text_.starts_with(text))
            return false;
        text_.remove_prefix(text.size());
        return true;
    }

    /// Reads up to the text, which comes next then.
    std::optional<std::string_view> readUpTo(std::string_view text) {
        const std::size_t length = text_.find(text);
        if (length == std::string_view::npos)
            return std::nullopt;
        const std::string_view result = text_.substr(0, length);
        text_.remove_prefix(length);
        return result;
    }

private:
    std::string_view text_;
};

/// From the file name on.
std::optional<LogMailForm::Attachment> readAttachment(Rest& rest) {
    const auto fileName = rest.readUpTo(attachmentType);
    if (!fileName || fileName->find_first_of("\r\n") != std::string_view::npos)
        return std::nullopt;
    rest.pass(attachmentType);
    const auto bytes = rest.readUpTo(delimiter);
    if (!bytes)
        return std::nullopt;
    return LogMailForm::Attachment{*fileName, *bytes};
}

std::optional<std::string_view> readValue(Rest& rest, std::string_view name) {
    if (!rest.pass(disposition + '"' + std::string(name) + "\";\r\n\r\n"))
        return std::nullopt;
    return rest.readUpTo(delimiter);
}

} // namespace

std::optional<LogMailForm> parseLogMailForm(std::string_view body) {
    Rest rest(body);
    LogMailForm form;
    if (rest.pass(disposition + std::string(attachmentName))) {
        form.attachment = readAttachment(rest);
        if (!form.attachment)
            return std::nullopt;
    }
    for (std::size_t i = 0; i < logMailNames.size(); ++i) {
        const auto value = readValue(rest, logMailNames[i]);
        if (!value)
            return std::nullopt;
        form.values[i] = *value;
    }
    if (!rest.pass(delimiter + "--\r\n") || !rest.isEmpty())
        return std::nullopt;
    return form;
}

} // namespace join::tools
