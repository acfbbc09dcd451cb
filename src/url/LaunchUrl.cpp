#include "url/LaunchUrl.h"

#include "base/Text.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace join {

namespace {

using Pair = std::pair<std::string_view, std::string_view>;

/// Returns the name and value of a piece, or nothing if it contains no separator.
std::optional<Pair> pairIn(std::string_view piece) {
    if (const std::size_t equals = piece.find('='); equals != std::string_view::npos) {
        const std::string_view value = piece.substr(equals + 1);
        return Pair(piece.substr(0, equals), value.substr(0, value.find('=')));
    }
    constexpr std::string_view encoded = "%3D";
    const std::size_t separator = std::min(piece.find(encoded), piece.find("%3d"));
    if (separator == std::string_view::npos)
        return std::nullopt;
    return Pair(piece.substr(0, separator), piece.substr(separator + encoded.size()));
}

} // namespace

LaunchUrl parseLaunchUrl(std::string_view url) {
    LaunchUrl result;
    const std::size_t begin = url.find("//");
    if (begin == std::string_view::npos)
        return result;
    result.hasParameters = true;
    std::string_view pairs = url.substr(begin + 2);
    pairs = pairs.substr(0, pairs.find("//"));

    for (const std::string_view piece : split(pairs, "&")) {
        if (const auto pair = pairIn(piece))
            result.parameters.insert_or_assign(pair->first, pair->second);
        else
            ++result.skippedPieces;
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
