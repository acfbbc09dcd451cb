#include "images/Volume.h"

#include "images/ChildOutput.h"
#include "images/Numbers.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace join::tools {

namespace {

constexpr std::uint64_t sectorSize = 512;
constexpr std::size_t systemAreaSize = 32768;

std::vector<std::string> makerCommand(const VolumeSource& source) {
    if (source.name.empty())
        throw std::runtime_error("a volume needs a name");
    if (!std::filesystem::is_directory(source.folder))
        throw std::runtime_error("no folder " + source.folder.string());
    return {"xorrisofs", "--no_rc",         "-quiet", "-R",   "-D", "-no-pad", "-input-charset",
            "UTF-8",     "-output-charset", "UTF-8",  "-uid", "0",  "-gid",    "0",
            "-V",        source.name,       "-o",     "-"};
}

/// Hands on the next bytes of the child's output, up to so many; gives how many came.
std::uint64_t pass(ChildOutput& child, std::uint64_t maximum, const ByteSink& sink) {
    std::array<char, 65536> buffer{};
    std::uint64_t passed = 0;
    while (passed < maximum) {
        const std::size_t wanted = std::min<std::uint64_t>(buffer.size(), maximum - passed);
        const std::size_t got = child.read(buffer.data(), wanted);
        if (got == 0)
            break;
        sink({buffer.data(), got});
        passed += got;
    }
    return passed;
}

void ignore(std::string_view /*bytes*/) {}

} // namespace

PartitionPlace findHfsPartition(std::string_view headOfMedium) {
    for (std::size_t entry = sectorSize; entry + sectorSize <= headOfMedium.size(); entry += sectorSize) {
        const std::string_view bytes = headOfMedium.substr(entry, sectorSize);
        if (!bytes.starts_with("PM"))
            break;
        if (std::string_view(bytes.substr(48, 32).data()) == "Apple_HFS")
            return {.offset = readBig32(bytes, 8) * sectorSize, .size = readBig32(bytes, 12) * sectorSize};
    }
    throw std::runtime_error("no HFS+ partition in the partition map");
}

// The maker writes a hybrid of both file systems. The HFS+ partition stands alone: it holds all of its files.
void makeHfsVolume(const VolumeSource& source, const ByteSink& sink) {
    std::vector<std::string> command = makerCommand(source);
    command.insert(command.end(),
                   {"-hfsplus", "-apm-block-size", "512", std::filesystem::absolute(source.folder)});
    if (!source.alsoFolder.empty())
        command.push_back(std::filesystem::absolute(source.alsoFolder));
    ChildOutput hybrid(command);

    std::string head;
    pass(hybrid, systemAreaSize, [&](std::string_view bytes) { head += bytes; });
    if (head.size() < systemAreaSize)
        hybrid.finish();
    const PartitionPlace place = findHfsPartition(head);
    if (place.offset < head.size())
        throw std::runtime_error("the HFS+ partition lies in the system area");
    pass(hybrid, place.offset - head.size(), ignore);
    const std::uint64_t passed = pass(hybrid, place.size, sink);
    pass(hybrid, UINT64_MAX, ignore);
    hybrid.finish();
    if (passed != place.size)
        throw std::runtime_error("the HFS+ partition is cut off");
}

void makeIsoVolume(const VolumeSource& source, const ByteSink& sink) {
    std::vector<std::string> command = makerCommand(source);
    command.push_back(std::filesystem::absolute(source.folder));
    ChildOutput volume(command);
    pass(volume, UINT64_MAX, sink);
    volume.finish();
}

} // namespace join::tools
