#pragma once

#include "base/Text.h"

#include <array>
#include <charconv>
#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace join {

namespace detail {

constexpr std::string_view textConversions[] = {"s", "@"};
constexpr std::string_view numberConversions[] = {"d", "i", "ld", "li", "lu", "hhd"};

/// A conversion at the start of a text, which begins with a percent sign.
struct Conversion {
    std::size_t length = 0; ///< including the percent sign; 0 if it is not one that we know
    bool isNumber = false;
};

constexpr Conversion conversionAt(std::string_view text) {
    const std::string_view rest = text.substr(1);
    for (const std::string_view name : textConversions)
        if (rest.starts_with(name))
            return {name.size() + 1, false};
    for (const std::string_view name : numberConversions)
        if (rest.starts_with(name))
            return {name.size() + 1, true};
    return {};
}

/// One argument, as the text to insert for it.
class FormatArgument {
public:
    FormatArgument(std::string_view text) : text_(text) {}
    FormatArgument(const char* text) : text_(text) {}
    FormatArgument(const std::string& text) : text_(text) {}
    FormatArgument(const Text& text) : text_(text ? std::string_view(*text) : absentText) {}
    FormatArgument(std::integral auto number) {
        char* const end = std::to_chars(digits_.data(), digits_.data() + digits_.size(), +number).ptr;
        text_ = {digits_.data(), static_cast<std::size_t>(end - digits_.data())};
    }
    FormatArgument(const FormatArgument&) = delete;
    FormatArgument& operator=(const FormatArgument&) = delete;

    std::string_view text() const { return text_; }

private:
    std::array<char, 24> digits_{};
    std::string_view text_;
};

std::string formatPieces(std::string_view format, std::initializer_list<FormatArgument> arguments);

} // namespace detail

/// A message format, checked against its arguments at compile time: "%s" and "%@" take a text; "%d", "%i",
/// "%ld", "%li", "%lu" and "%hhd" take an integer or a bool, which is written as 1 or 0.
template <class... Arguments>
class Format {
public:
    template <std::size_t size>
    consteval Format(const char (&text)[size]) : text_(text, size - 1) {
        constexpr std::array<bool, sizeof...(Arguments) + 1> isNumber{
            std::is_integral_v<std::remove_cvref_t<Arguments>>..., false};
        std::size_t argument = 0;
        for (std::size_t i = text_.find('%'); i != std::string_view::npos; i = text_.find('%', i)) {
            const detail::Conversion conversion = detail::conversionAt(text_.substr(i));
            if (conversion.length == 0)
                throw "not a conversion that this system uses";
            if (argument == sizeof...(Arguments) || isNumber[argument] != conversion.isNumber)
                throw "the argument is missing or of the other kind";
            ++argument;
            i += conversion.length;
        }
        if (argument != sizeof...(Arguments))
            throw "more arguments than conversions";
    }

    std::string_view text() const { return text_; }

private:
    std::string_view text_;
};

/// Returns the format with its conversions replaced by the arguments. An absent text becomes "(null)".
/// Nothing is escaped.
template <class... Arguments>
std::string formatted(Format<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    return detail::formatPieces(format.text(), {detail::FormatArgument(arguments)...});
}

} // namespace join
