#include "base/Format.h"

namespace join::detail {

std::string formatPieces(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    std::size_t size = format.size();
    for (const FormatArgument& argument : arguments)
        size += argument.text().size();
    std::string result;
    result.reserve(size);

    for (const FormatArgument& argument : arguments) {
        const std::size_t percent = format.find('%');
        result.append(format.substr(0, percent)).append(argument.text());
        format.remove_prefix(percent + conversionAt(format.substr(percent)).length);
    }
    return result.append(format);
}

} // namespace join::detail
