#include "platform/linux/documents/PropertyListForms.h"

#include "platform/linux/documents/ValueBuilder.h"

#include <expat.h>
#include <glib.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace join::platform {

namespace {

constexpr int maximumElements = 8192;
constexpr std::string_view whiteSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

/// Reads a decimal number, or a hexadecimal one after "0x". Anything else is 0.
std::int64_t integerFrom(const std::string& text) {
    const bool isHexadecimal = text.find_first_of("xX") <= 2; // there may be a sign
    return static_cast<std::int64_t>(std::strtoull(text.c_str(), nullptr, isHexadecimal ? 16 : 10));
}

/// Converts "2026-11-22T21:56:36Z" to the form of binary lists. Anything else is unchanged.
std::string dateFrom(std::string_view text) {
    std::string date(text);
    if (date.size() == 20 && date[10] == 'T' && date.back() == 'Z') {
        date[10] = ' ';
        date.replace(19, 1, " +0000");
    }
    return date;
}

std::string bytesFrom(const std::string& base64) {
    gsize size = 0;
    g_autofree guchar* bytes = g_base64_decode(base64.c_str(), &size);
    return {reinterpret_cast<const char*>(bytes), size};
}

/// One document while it is being parsed.
class Document {
public:
    Document() : parser_(XML_ParserCreate("UTF-8"), XML_ParserFree) {}

    std::optional<Value> parse(std::string_view bytes);

private:
    static Document& of(void* user) { return *static_cast<Document*>(user); }

    void begin(std::string_view name);
    void end(std::string_view name);
    void take(std::string_view bytes);
    bool addScalar(std::string_view name);

    /// Ends the parse if the condition is false.
    void require(bool isFit) {
        if (!isFit)
            XML_StopParser(parser_.get(), XML_FALSE);
    }

    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser_;
    ValueBuilder builder_;
    int elements_ = 0;
    bool isScalar_ = false; ///< whether the element that began last is a scalar and still open
    std::string text_;      ///< that element's text
};

std::optional<Value> Document::parse(std::string_view bytes) {
    XML_Parser parser = parser_.get();
    if (!parser)
        return std::nullopt;
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser, [](void* user, const char* name, const char**) noexcept { of(user).begin(name); },
        [](void* user, const char* name) noexcept { of(user).end(name); });
    XML_SetCharacterDataHandler(parser, [](void* user, const char* bytes, int size) noexcept {
        of(user).take({bytes, static_cast<std::size_t>(size)});
    });
    // A document's own declarations can expand to any length and take any time. No honest list has any.
    XML_SetStartDoctypeDeclHandler(
        parser, [](void* user, const char*, const char*, const char*, int hasDeclarations) noexcept {
            of(user).require(hasDeclarations == 0);
        });
    XML_SetSkippedEntityHandler(parser,
                                [](void* user, const char*, int) noexcept { of(user).require(false); });
    if (XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) != XML_STATUS_OK)
        return std::nullopt;
    return builder_.takeDocument();
}

void Document::begin(std::string_view name) {
    if (++elements_ == 1)
        return require(name == "plist");
    require(!isScalar_ && elements_ <= maximumElements);
    isScalar_ = name != "dict" && name != "array";
    text_.clear();
    if (!isScalar_)
        require(builder_.begin(name == "dict" ? Value{Value::Dictionary()} : Value{Value::Array()}));
}

void Document::end(std::string_view name) {
    require(std::exchange(isScalar_, false) ? addScalar(name) : name == "plist" || builder_.end());
}

bool Document::addScalar(std::string_view name) {
    if (name == "key")
        return builder_.name(std::move(text_));
    if (name == "string")
        return builder_.add({std::move(text_)});
    if (name == "true" || name == "false")
        return builder_.add({name == "true"});
    if (name == "integer")
        return builder_.add({integerFrom(std::string(trimmed(text_)))});
    if (name == "real")
        return builder_.add({g_ascii_strtod(text_.c_str(), nullptr)});
    if (name == "date")
        return builder_.add({dateFrom(trimmed(text_))});
    return name == "data" && builder_.add({dataText(bytesFrom(text_))});
}

void Document::take(std::string_view bytes) {
    if (isScalar_)
        text_ += bytes;
    else
        require(trimmed(bytes).empty());
}

} // namespace

std::optional<Value> parseXmlPropertyList(std::string_view bytes) { return Document().parse(bytes); }

} // namespace join::platform
