#include "platform/linux/documents/BinaryPlistGraph.h"

#include "platform/Value.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace join::platform {

namespace {

constexpr std::uint64_t maximumObjects = 4096;
constexpr std::uint64_t maximumExpandedObjects = 16384;
constexpr std::uint64_t maximumExpandedBytes = std::uint64_t{8} << 20;
constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

/// A big-endian number of one to eight bytes.
std::uint64_t numberFrom(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

struct Trailer {
    std::uint64_t offsetSize;
    std::uint64_t referenceSize;
    std::uint64_t objectCount;
    std::uint64_t topObject;
    std::uint64_t tableOffset;
};

/// The trailer, when it fits to the size of the list: header, objects, offset table and trailer fill it
/// exactly.
std::optional<Trailer> trailerOf(std::string_view bytes) {
    if (bytes.size() < headerSize + trailerSize)
        return std::nullopt;
    const std::string_view text = bytes.substr(bytes.size() - trailerSize);
    const Trailer trailer{.offsetSize = numberFrom(text.substr(6, 1)),
                          .referenceSize = numberFrom(text.substr(7, 1)),
                          .objectCount = numberFrom(text.substr(8, 8)),
                          .topObject = numberFrom(text.substr(16, 8)),
                          .tableOffset = numberFrom(text.substr(24, 8))};
    const auto isWidth = [](std::uint64_t width) { return width >= 1 && width <= 8; };
    const std::uint64_t tableEnd = bytes.size() - trailerSize;
    const bool fits = isWidth(trailer.offsetSize) && isWidth(trailer.referenceSize) &&
                      trailer.objectCount <= maximumObjects && trailer.topObject < trailer.objectCount &&
                      trailer.tableOffset >= headerSize && trailer.tableOffset <= tableEnd &&
                      trailer.objectCount * trailer.offsetSize == tableEnd - trailer.tableOffset;
    return fits ? std::optional(trailer) : std::nullopt;
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
    Kind kind = Kind::simple;
    std::string_view payload; ///< what follows the first byte and the count
};

/// How large an object is with everything that it refers to, written out as a tree.
struct Extent {
    std::uint64_t objects = 1;
    std::uint64_t bytes = 0;
    int height = 1;
};

class Graph {
public:
    Graph(std::string_view bytes, const Trailer& trailer)
        : bytes_(bytes), trailer_(trailer), extents_(trailer.objectCount), visiting_(trailer.objectCount) {}

    /// The object's extent; nothing when it is malformed, out of all proportion, part of a cycle or too high
    /// a tree.
    std::optional<Extent> extentOf(std::uint64_t number, int depth) {
        if (number >= trailer_.objectCount || depth > maximumValueDepth || visiting_[number])
            return std::nullopt;
        if (extents_[number])
            return extents_[number];
        visiting_[number] = true;
        extents_[number] = measure(number, depth);
        visiting_[number] = false;
        return extents_[number];
    }

private:
    std::optional<Object> object(std::uint64_t number) const;
    std::optional<Object> countedObject(Kind kind, unsigned nibble, std::string_view rest) const;
    std::optional<Extent> measure(std::uint64_t number, int depth);
    bool areKeys(std::string_view references) const;

    std::uint64_t reference(std::string_view references, std::uint64_t index) const {
        return numberFrom(references.substr(index * trailer_.referenceSize, trailer_.referenceSize));
    }

    std::string_view bytes_;
    Trailer trailer_;
    std::vector<std::optional<Extent>> extents_;
    std::vector<bool> visiting_;
};

std::optional<Object> Graph::object(std::uint64_t number) const {
    if (number >= trailer_.objectCount)
        return std::nullopt;
    const auto entry = trailer_.tableOffset + number * trailer_.offsetSize;
    const auto offset = numberFrom(bytes_.substr(entry, trailer_.offsetSize));
    if (offset < headerSize || offset >= trailer_.tableOffset)
        return std::nullopt;

    const std::string_view text = bytes_.substr(offset, trailer_.tableOffset - offset);
    const auto marker = static_cast<unsigned char>(text.front());
    const auto kind = static_cast<Kind>(marker >> 4U);
    const unsigned nibble = marker & 0xFU;
    const std::string_view rest = text.substr(1);
    const auto fixed = [&](std::uint64_t size, bool valid) {
        return valid && size <= rest.size() ? std::optional(Object{kind, rest.substr(0, size)})
                                            : std::nullopt;
    };
    switch (kind) {
    case Kind::simple:
        return fixed(0, nibble == 0 || nibble == 8 || nibble == 9); // null, false, true
    case Kind::integer:
        return fixed(std::uint64_t{1} << nibble, nibble <= 4);
    case Kind::real:
        return fixed(std::uint64_t{1} << nibble, nibble == 2 || nibble == 3);
    case Kind::date:
        return fixed(8, nibble == 3);
    case Kind::identifier:
        return fixed(nibble + 1, nibble < 8);
    default:
        return countedObject(kind, nibble, rest);
    }
}

/// An object whose count is in its first byte, or, when that says 15, in an integer object after it.
std::optional<Object> Graph::countedObject(Kind kind, unsigned nibble, std::string_view rest) const {
    std::uint64_t count = nibble;
    if (nibble == 0xF) {
        const unsigned marker = rest.empty() ? 0U : static_cast<unsigned char>(rest.front());
        const std::size_t width = std::size_t{1} << (marker & 0x3U);
        if (marker < 0x10 || marker > 0x13 || rest.size() < 1 + width)
            return std::nullopt;
        count = numberFrom(rest.substr(1, width));
        rest.remove_prefix(1 + width);
    }

    std::uint64_t unit = 0;
    switch (kind) {
    case Kind::data:
    case Kind::asciiText:
        unit = 1;
        break;
    case Kind::utf16Text:
        unit = 2;
        break;
    case Kind::array:
    case Kind::set:
        unit = trailer_.referenceSize;
        break;
    case Kind::dictionary:
        unit = 2 * trailer_.referenceSize;
        break;
    default:
        return std::nullopt;
    }
    if (count > rest.size() / unit)
        return std::nullopt;
    return Object{kind, rest.substr(0, count * unit)};
}

/// Whether the object can be the key of a dictionary: a text without NUL, with which libraries in C cannot
/// cope.
bool isKey(const Object& object) {
    if (object.kind == Kind::asciiText)
        return object.payload.find('\0') == std::string_view::npos;
    for (std::size_t at = 0; at < object.payload.size(); at += 2)
        if (numberFrom(object.payload.substr(at, 2)) == 0)
            return false;
    return object.kind == Kind::utf16Text;
}

bool Graph::areKeys(std::string_view references) const {
    for (std::uint64_t index = 0; index < references.size() / trailer_.referenceSize; ++index) {
        const auto key = object(reference(references, index));
        if (!key || !isKey(*key))
            return false;
    }
    return true;
}

std::optional<Extent> Graph::measure(std::uint64_t number, int depth) {
    const auto found = object(number);
    if (!found)
        return std::nullopt;
    const auto& [kind, payload] = *found;
    Extent whole{.objects = 1, .bytes = payload.size(), .height = 1};
    if (kind != Kind::array && kind != Kind::set && kind != Kind::dictionary)
        return whole;
    if (kind == Kind::dictionary && !areKeys(payload.substr(0, payload.size() / 2)))
        return std::nullopt;

    for (std::uint64_t index = 0; index < payload.size() / trailer_.referenceSize; ++index) {
        const auto part = extentOf(reference(payload, index), depth + 1);
        if (!part)
            return std::nullopt;
        whole.objects += part->objects;
        whole.bytes += part->bytes;
        whole.height = std::max(whole.height, part->height + 1);
        if (whole.objects > maximumExpandedObjects || whole.bytes > maximumExpandedBytes ||
            whole.height > maximumValueDepth)
            return std::nullopt;
    }
    return whole;
}

} // namespace

bool isReasonableBinaryPlist(std::string_view bytes) {
    const auto trailer = trailerOf(bytes);
    return trailer && Graph(bytes, *trailer).extentOf(trailer->topObject, 1).has_value();
}

} // namespace join::platform
