#include "diag/EmbeddedPropertyList.h"

#include "base/Logging.h"
#include "platform/Bundles.h"
#include "platform/FileManager.h"
#include "platform/PropertyLists.h"
#include "platform/Services.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <string_view>

namespace join {

namespace {

using Bytes = std::span<const std::byte>;

constexpr std::uint64_t headerSize = 32;
constexpr std::uint64_t commandHeaderSize = 8;
constexpr std::uint64_t segmentCommandSize = 72;
constexpr std::uint64_t sectionSize = 80;
constexpr std::uint32_t segment64 = 25;

bool holds(Bytes bytes, std::uint64_t offset, std::uint64_t size) {
    return offset <= bytes.size() && size <= bytes.size() - offset;
}

/// Returns a little-endian number. The caller has checked that the bytes contain it.
template <std::unsigned_integral Number>
Number numberAt(Bytes bytes, std::uint64_t offset) {
    Number number = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;)
        number = static_cast<Number>(number << 8U) | std::to_integer<Number>(bytes[offset + i]);
    return number;
}

std::string_view textOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// Returns whether the 16 bytes at the offset are that name, padded with NUL.
bool isNamed(Bytes bytes, std::uint64_t offset, std::string_view name) {
    const std::string_view field = textOf(bytes.subspan(offset, 16));
    return field.substr(0, std::min(field.find('\0'), field.size())) == name;
}

} // namespace

std::optional<Bytes> embeddedPropertyList(Bytes file) {
    if (!holds(file, 0, headerSize))
        return std::nullopt;
    std::uint64_t command = headerSize;
    for (auto commands = numberAt<std::uint32_t>(file, 16); commands > 0; --commands) {
        if (!holds(file, command, commandHeaderSize))
            return std::nullopt;
        const bool isSegment = numberAt<std::uint32_t>(file, command) == segment64;
        const std::uint64_t size = numberAt<std::uint32_t>(file, command + 4);
        if (size == 0) // the walk would never advance
            return std::nullopt;
        if (!holds(file, command, isSegment ? std::max(size, segmentCommandSize) : size))
            return std::nullopt;
        const bool isText = isSegment && isNamed(file, command + 8, "__TEXT");
        auto sections = isText ? numberAt<std::uint32_t>(file, command + 64) : 0;
        std::uint64_t section = command + segmentCommandSize;
        command = sections == 0 ? command + size : section + sections * sectionSize;
        for (; sections > 0; --sections, section += sectionSize) {
            if (!holds(file, section, sectionSize))
                return std::nullopt;
            if (!isNamed(file, section, "__info_plist"))
                continue;
            const auto dataSize = numberAt<std::uint64_t>(file, section + 40);
            const auto dataOffset = numberAt<std::uint32_t>(file, section + 48);
            if (!holds(file, dataOffset, dataSize))
                return std::nullopt;
            return file.subspan(dataOffset, dataSize);
        }
    }
    return std::nullopt;
}

std::optional<platform::Value> embeddedPlistV2(const std::string& path) {
    std::optional<platform::Value> list;
    reportingExceptions("-[AppDelegate embeddedPlistV2:]", [&] {
        list = platform::services().bundles->infoDictionary(path);
        if (list)
            return;
        const auto file = platform::services().fileManager->map(path);
        if (!file)
            return;
        if (const auto data = embeddedPropertyList(*file))
            list = platform::services().propertyLists->parse(textOf(*data));
    });
    return list;
}

} // namespace join
