#include "url/LaunchUrl.h"

#include "core/Text.h"
#include "platform/Utf8.h"

namespace join {

LaunchUrl parseLaunchUrl(std::string_view url) {
    LaunchUrl result;
    const std::size_t begin = url.find("//");
    if (begin == std::string_view::npos)
        return result;
    result.hasParameters = true;
    std::string_view pairs = url.substr(begin + 2);
    pairs = pairs.substr(0, pairs.find("//"));

    for (const std::string_view piece : split(pairs, "&")) {
        const std::size_t equals = piece.find('=');
        if (equals == std::string_view::npos) {
            ++result.skippedPieces;
            continue;
        }
        const std::string_view value = piece.substr(equals + 1);
        result.parameters.insert_or_assign(piece.substr(0, equals), value.substr(0, value.find('=')));
    }
    return result;
}

std::string launchUrlText(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = platform::utf8SequenceLength(bytes);
        const auto byte = static_cast<unsigned char>(bytes.front());
        if (length == 0 || (byte < 0x20 && byte != '\t') || byte == 0x7F)
            text.append({'%', digits[byte >> 4U], digits[byte & 0xFU]});
        else
            text.append(bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

} // namespace join
