#include "platform/linux/documents/PropertyListForms.h"

#include "platform/Utf8.h"
#include "platform/linux/documents/ValueBuilder.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

namespace join::platform {

namespace {

constexpr std::uint64_t maximumObjects = 4096;
constexpr std::uint64_t maximumExpandedObjects = 16384;
constexpr std::uint64_t maximumExpandedBytes = std::uint64_t{8} << 20;
constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

/// Returns a big-endian number, or the lower eight bytes of a longer one.
std::uint64_t numberFrom(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

double realFrom(std::string_view bytes) {
    const std::uint64_t number = numberFrom(bytes);
    if (bytes.size() == sizeof(float))
        return std::bit_cast<float>(static_cast<std::uint32_t>(number));
    return std::bit_cast<double>(number);
}

/// Returns nothing for a surrogate without its other half, or a text that contains a NUL.
std::optional<std::string> utf8From(std::string_view utf16) {
    std::vector<gunichar2> units;
    for (std::size_t at = 0; at < utf16.size(); at += 2)
        units.push_back(static_cast<gunichar2>(numberFrom(utf16.substr(at, 2))));
    const auto count = static_cast<glong>(units.size());
    units.push_back(0); // there is always an array to point at
    glong countRead = 0;
    g_autofree char* text = g_utf16_to_utf8(units.data(), count, &countRead, nullptr, nullptr);
    return text && countRead == count ? std::optional<std::string>(text) : std::nullopt;
}

/// Returns a date, given in seconds since the beginning of 2001. One outside the calendar becomes its first
/// or last.
std::string dateText(double seconds) {
    constexpr double firstDate = -63'114'076'800; // 0001-01-01 00:00:00
    constexpr double lastDate = 252'423'993'599;  // 9999-12-31 23:59:59
    constexpr std::time_t beginning = 978'307'200;
    const std::time_t time =
        beginning + static_cast<std::time_t>(std::min(std::max(firstDate, seconds), lastDate));
    tm parts{};
    ::gmtime_r(&time, &parts);
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d +0000", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text.data();
}

enum class Kind : unsigned char { // the upper half of an object's first byte
    simple = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    asciiText = 0x5,
    utf16Text = 0x6,
    identifier = 0x8,
    array = 0xA,
    set = 0xC,
    dictionary = 0xD,
};

struct Object {
    Kind kind;
    unsigned nibble;          ///< the lower half of the first byte
    std::string_view payload; ///< what follows the first byte and the count
};

class List {
public:
    explicit List(std::string_view bytes) : bytes_(bytes) {}

    std::optional<Value> value() {
        return readTrailer() && read(topObject_) ? builder_.takeDocument() : std::nullopt;
    }

private:
    bool readTrailer();
    std::optional<Object> object(std::uint64_t number);
    std::optional<Object> sized(Kind kind, unsigned nibble, std::string_view rest) const;
    bool read(std::uint64_t number);
    bool readElements(std::string_view names, std::string_view elements);
    bool readName(std::uint64_t number);

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::uint64_t tableOffset_ = 0;
    std::uint64_t expandedObjects_ = 0;
    std::uint64_t expandedBytes_ = 0;
    ValueBuilder builder_;
};

/// Returns false unless header, objects, offset table and trailer fill the list exactly.
bool List::readTrailer() {
    if (bytes_.size() < headerSize + trailerSize)
        return false;
    const std::uint64_t tableEnd = bytes_.size() - trailerSize;
    const std::string_view trailer = bytes_.substr(tableEnd);
    offsetSize_ = numberFrom(trailer.substr(6, 1));
    referenceSize_ = numberFrom(trailer.substr(7, 1));
    objectCount_ = numberFrom(trailer.substr(8, 8));
    topObject_ = numberFrom(trailer.substr(16, 8));
    tableOffset_ = numberFrom(trailer.substr(24, 8));
    const auto isWidth = [](std::uint64_t width) { return width >= 1 && width <= 8; };
    return isWidth(offsetSize_) && isWidth(referenceSize_) && objectCount_ <= maximumObjects &&
           tableOffset_ >= headerSize && tableOffset_ <= tableEnd &&
           objectCount_ * offsetSize_ == tableEnd - tableOffset_;
}

/// Returns the object, and counts it towards the size of the tree.
std::optional<Object> List::object(std::uint64_t number) {
    if (number >= objectCount_ || ++expandedObjects_ > maximumExpandedObjects)
        return std::nullopt;
    const auto offset = numberFrom(bytes_.substr(tableOffset_ + number * offsetSize_, offsetSize_));
    if (offset < headerSize || offset >= tableOffset_)
        return std::nullopt;
    const auto marker = static_cast<unsigned char>(bytes_[offset]);
    const auto found = sized(static_cast<Kind>(marker >> 4U), marker & 0xFU,
                             bytes_.substr(offset + 1, tableOffset_ - offset - 1));
    if (found)
        expandedBytes_ += found->payload.size();
    return expandedBytes_ <= maximumExpandedBytes ? found : std::nullopt;
}

/// Returns the object, with its payload cut out of the rest of the list.
std::optional<Object> List::sized(Kind kind, unsigned nibble, std::string_view rest) const {
    std::uint64_t count = nibble;
    const bool hasCount = kind >= Kind::data && kind != Kind::identifier;
    if (hasCount && nibble == 0xF) { // the count is in an integer object that follows
        const unsigned marker = rest.empty() ? 0U : static_cast<unsigned char>(rest.front());
        const std::size_t width = std::size_t{1} << (marker & 0x3U);
        if (marker < 0x10 || marker > 0x13 || rest.size() < 1 + width)
            return std::nullopt;
        count = numberFrom(rest.substr(1, width));
        rest.remove_prefix(1 + width);
    }
    const auto of = [&](std::uint64_t units, std::uint64_t unit, bool isValid = true) {
        return isValid && units <= rest.size() / unit
                   ? std::optional(Object{kind, nibble, rest.substr(0, units * unit)})
                   : std::nullopt;
    };
    switch (kind) {
    case Kind::simple:
        return of(0, 1, nibble == 0 || nibble == 8 || nibble == 9); // null, false, true
    case Kind::integer:
        return of(1, std::uint64_t{1} << nibble, nibble <= 4);
    case Kind::real:
        return of(1, std::uint64_t{1} << nibble, nibble == 2 || nibble == 3);
    case Kind::date:
        return of(1, 8, nibble == 3);
    case Kind::identifier:
        return of(1, nibble + 1, nibble < 8);
    case Kind::data:
    case Kind::asciiText:
        return of(count, 1);
    case Kind::utf16Text:
        return of(count, 2);
    case Kind::array:
    case Kind::set:
        return of(count, referenceSize_);
    case Kind::dictionary:
        return of(count, 2 * referenceSize_);
    }
    return std::nullopt;
}

std::optional<std::string> textOf(const Object& object) {
    if (object.kind == Kind::utf16Text)
        return utf8From(object.payload);
    const bool isText = object.kind == Kind::asciiText && isUtf8(object.payload);
    return isText ? std::optional<std::string>(object.payload) : std::nullopt;
}

bool List::read(std::uint64_t number) {
    const auto found = object(number);
    if (!found)
        return false;
    const std::string_view payload = found->payload;
    switch (found->kind) {
    case Kind::simple:
        return builder_.add(found->nibble == 0 ? Value{} : Value{found->nibble == 9});
    case Kind::integer:
        return builder_.add({static_cast<std::int64_t>(numberFrom(payload))});
    case Kind::real:
        return builder_.add({realFrom(payload)});
    case Kind::date:
        return builder_.add({dateText(realFrom(payload))});
    case Kind::data:
        return builder_.add({dataText(payload)});
    case Kind::identifier:
        return builder_.add({std::to_string(numberFrom(payload))});
    case Kind::array:
    case Kind::set:
        return builder_.begin({Value::Array()}) && readElements({}, payload);
    case Kind::dictionary: // all names come first
        return builder_.begin({Value::Dictionary()}) &&
               readElements(payload.substr(0, payload.size() / 2), payload.substr(payload.size() / 2));
    default:
        auto text = textOf(*found);
        return text && builder_.add({std::move(*text)});
    }
}

/// Reads what these references lead to. The elements of a dictionary have names.
bool List::readElements(std::string_view names, std::string_view elements) {
    for (std::size_t at = 0; at < elements.size(); at += referenceSize_) {
        if (!names.empty() && !readName(numberFrom(names.substr(at, referenceSize_))))
            return false;
        if (!read(numberFrom(elements.substr(at, referenceSize_))))
            return false;
    }
    return builder_.end();
}

bool List::readName(std::uint64_t number) {
    const auto found = object(number);
    auto name = found ? textOf(*found) : std::nullopt;
    return name && name->find('\0') == std::string::npos && builder_.name(std::move(*name));
}

} // namespace

std::optional<Value> parseBinaryPropertyList(std::string_view bytes) { return List(bytes).value(); }

} // namespace join::platform
