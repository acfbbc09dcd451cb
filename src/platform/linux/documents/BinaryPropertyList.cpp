#include "platform/linux/documents/PropertyListForms.h"

#include "platform/Utf8.h"
#include "platform/linux/documents/ValueBuilder.h"

#include <bit>
#include <cstdint>
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

void appendUtf8(std::string& text, std::uint64_t codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
        return;
    }
    unsigned further = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3; // six bits each
    text += static_cast<char>(0xFF00U >> (further + 1) | codePoint >> 6 * further);
    while (further-- > 0)
        text += static_cast<char>(0x80 | (codePoint >> 6 * further & 0x3F));
}

/// A surrogate without its other half becomes bytes that are not UTF-8.
std::string utf8From(std::string_view utf16) {
    std::string text;
    const auto unit = [&](std::size_t at) { return numberFrom(utf16.substr(at, 2)); };
    for (std::size_t at = 0; at < utf16.size(); at += 2) {
        std::uint64_t codePoint = unit(at);
        if (codePoint >> 10U == 0x36 && at + 2 < utf16.size() && unit(at + 2) >> 10U == 0x37) {
            at += 2;
            codePoint = 0x10000 + ((codePoint & 0x3FF) << 10U) + (unit(at) & 0x3FF);
        }
        appendUtf8(text, codePoint);
    }
    return text;
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
    bool readName(std::uint64_t number);

    std::uint64_t reference(std::string_view references, std::uint64_t index) const {
        return numberFrom(references.substr(index * referenceSize_, referenceSize_));
    }

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
    if (object.kind != Kind::asciiText && object.kind != Kind::utf16Text)
        return std::nullopt;
    std::string text =
        object.kind == Kind::utf16Text ? utf8From(object.payload) : std::string(object.payload);
    return isUtf8(text) ? std::optional(std::move(text)) : std::nullopt;
}

bool List::read(std::uint64_t number) {
    const auto found = object(number);
    if (!found)
        return false;
    const std::string_view payload = found->payload;
    const std::uint64_t count = payload.size() / referenceSize_; // of a container
    bool isRead = true;
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
        isRead = builder_.begin({Value::Array()});
        for (std::uint64_t index = 0; isRead && index < count; ++index)
            isRead = read(reference(payload, index));
        return isRead && builder_.end();
    case Kind::dictionary: // all names come first
        isRead = builder_.begin({Value::Dictionary()});
        for (std::uint64_t index = 0; isRead && index < count / 2; ++index)
            isRead = readName(reference(payload, index)) && read(reference(payload, count / 2 + index));
        return isRead && builder_.end();
    default:
        auto text = textOf(*found);
        return text && builder_.add({std::move(*text)});
    }
}

bool List::readName(std::uint64_t number) {
    const auto found = object(number);
    auto name = found ? textOf(*found) : std::nullopt;
    return name && name->find('\0') == std::string::npos && builder_.name(std::move(*name));
}

} // namespace

std::optional<Value> parseBinaryPropertyList(std::string_view bytes) { return List(bytes).value(); }

} // namespace join::platform
