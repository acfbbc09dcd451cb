#include "standins/ServiceImages.h"

#include "images/ScratchFolder.h"

#include <array>
#include <fstream>
#include <random>
#include <stdexcept>

namespace join::tools {
namespace {

namespace fs = std::filesystem;

/// The same bytes every time.
void writeNoise(const fs::path& path, int megabytes) {
    std::mt19937_64 random; // NOLINT(cert-msc32-c,cert-msc51-cpp): a measurement is repeatable
    std::array<std::mt19937_64::result_type, 1000> block{};
    constexpr int blocksInAMegabyte = 1'000'000 / sizeof block;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (int left = megabytes * blocksInAMegabyte; left > 0 && file; --left) {
        for (auto& number : block)
            number = random();
        file.write(reinterpret_cast<const char*>(block.data()), sizeof block);
    }
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

/// Makes a volume of the folder's content and the link.
void makeImage(const ScratchFolder& content, std::string_view volume, ImageKind kind, const fs::path& image) {
    fs::create_symlink("/Applications", content.path() / "Applications");
    makeDiskImage(content.path(), volume, kind, image);
}

void makeAgentImage(const ServiceImages& images) {
    const ScratchFolder content(images.folder);
    const fs::path agent = content.path() / "Tavo.app";
    makeAgentBundle(agent, images.agentVersion);
    makeCrashDetector(content.path() / "TavoCrashDetector", images.crashDetectorVersion);
    if (images.payload > 0)
        writeNoise(agent / "Contents" / "Resources" / "payload", images.payload);
    makeImage(content, "Tavo", images.kind, images.folder / agentImageName);
}

void makeJoinImage(const ServiceImages& images) {
    if (!fs::is_directory(images.joinApp))
        throw std::runtime_error("no bundle at " + images.joinApp.string());
    const ScratchFolder content(images.folder);
    fs::copy(images.joinApp, content.path() / "Join.app",
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    makeImage(content, "TavoJoin", images.kind, images.folder / joinImageName);
}

} // namespace

void makeServiceImages(const ServiceImages& images) {
    fs::create_directories(images.folder);
    makeAgentImage(images);
    makeJoinImage(images);
}

} // namespace join::tools
