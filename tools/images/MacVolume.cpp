#include "images/MacVolume.h"

#include "images/Numbers.h"
#include "images/ScratchFolder.h"

#include <stdexcept>
#include <utility>

namespace join::tools {

namespace {

/// Stands in for the store of hard links, whose name no file can have; like the store, it comes last.
const std::string placeholder = "~~~~HFS+ Private Data";
const std::string storeOfFiles = std::string(4, '\0') + "HFS+ Private Data";

/// A name as the catalogue holds it: its length, then UTF-16.
std::string catalogueName(std::string_view ascii) {
    std::string bytes{'\0', static_cast<char>(ascii.size())};
    for (const char character : ascii)
        bytes += {'\0', character};
    return bytes;
}

/// Makes an empty file a hard link to the one with that number in the store.
void makeHardLink(std::string& volume, std::string_view name, std::uint32_t number) {
    using namespace std::string_literals;
    constexpr std::size_t placeOfNumber = 44;
    const std::string head = catalogueName(name) + "\0\2"s; // of a file's record
    const std::size_t place = volume.find(head);
    if (place == std::string::npos)
        throw std::runtime_error("no such file in the catalogue");
    std::string link;
    appendBig32(link, number);
    link += "hlnkhfs+"; // type and creator
    volume.replace(place + head.size() - 2 + placeOfNumber, link.size(), link);
}

std::string volumeWith(const ScratchFolder& own, VolumeSource source) {
    own.write(".journal", std::string(1 << 16, 'j'));
    own.write(".journal_info_block", std::string(1 << 12, 'b'));
    std::filesystem::create_directory(own.path() / ".HFS+ Private Directory Data\r");
    own.write(placeholder + "/temp16", "removed while it was open");
    source.alsoFolder = own.path();
    return renamedInCatalogue(volumeOf(VolumeKind::hfsPlus, source), placeholder, storeOfFiles);
}

} // namespace

std::string macVolume(const VolumeSource& source) { return volumeWith(ScratchFolder(), source); }

std::string macVolumeWithHardLinks(const VolumeSource& source) {
    constexpr std::uint32_t number = 17;
    const ScratchFolder own;
    own.write(placeholder + "/iNode" + std::to_string(number), "in one place");
    own.write("one name", "");
    own.write("another name", "");
    std::string volume = volumeWith(own, source);
    makeHardLink(volume, "one name", number);
    makeHardLink(volume, "another name", number);
    return volume;
}

std::string renamedInCatalogue(std::string volume, std::string_view from, std::string_view to) {
    return replaced(std::move(volume), catalogueName(from), catalogueName(to));
}

std::string replaced(std::string bytes, std::string_view before, std::string_view after) {
    std::size_t place = bytes.find(before);
    if (place == std::string::npos || before.size() != after.size())
        throw std::runtime_error("cannot patch the volume");
    for (; place != std::string::npos; place = bytes.find(before, place + after.size()))
        bytes.replace(place, after.size(), after);
    return bytes;
}

} // namespace join::tools
