#include "images/Volume.h"

#include "images/Numbers.h"
#include "images/ScratchFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace join::tools {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t diskSectorSize = 512;
constexpr std::size_t systemAreaSize = 32768;

/// Where something lies, in bytes.
struct Place {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

std::runtime_error cutOff() { return std::runtime_error("the volume is cut off"); }

std::vector<std::string> makerCommand(VolumeKind kind, const VolumeSource& source, const fs::path& volume) {
    if (source.name.empty())
        throw std::runtime_error("a volume needs a name");
    if (!fs::is_directory(source.folder))
        throw std::runtime_error("no folder " + source.folder.string());
    std::vector<std::string> command{
        "xorrisofs", "--no_rc",         "-quiet", "-R",   "-D", "-no-pad", "-input-charset",
        "UTF-8",     "-output-charset", "UTF-8",  "-uid", "0",  "-gid",    "0",
        "-V",        source.name,       "-o",     volume};
    if (kind == VolumeKind::hfsPlus)
        command.insert(command.end(), {"-hfsplus", "-apm-block-size", "512"});
    command.push_back(fs::absolute(source.folder));
    if (!source.alsoFolder.empty())
        command.push_back(fs::absolute(source.alsoFolder));
    return command;
}

/// Waits for the program, which has no input. Throws what it said, unless its status is 0.
void run(std::vector<std::string> command, const fs::path& errors) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t process = 0;
    int status = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (status != 0)
        throw std::system_error(status, std::generic_category(), "cannot start " + command[0]);
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (status == 0)
        return;
    std::ifstream said(errors);
    throw std::runtime_error(command[0] + " failed: " + std::string(std::istreambuf_iterator(said), {}));
}

/// In an Apple partition map: entries of a sector each, behind the first sector of the medium.
Place hfsPartition(std::ifstream& medium) {
    std::string head(systemAreaSize, '\0');
    if (!medium.read(head.data(), static_cast<std::streamsize>(head.size())))
        throw cutOff();
    for (std::size_t entry = diskSectorSize; entry < head.size(); entry += diskSectorSize) {
        const std::string_view bytes = std::string_view(head).substr(entry, diskSectorSize);
        if (!bytes.starts_with("PM"))
            break;
        if (std::string_view(bytes.substr(48, 32).data()) == "Apple_HFS")
            return {.offset = readBig32(bytes, 8) * diskSectorSize,
                    .size = readBig32(bytes, 12) * diskSectorSize};
    }
    throw std::runtime_error("no HFS+ partition in the partition map");
}

void pass(std::ifstream& medium, const Place& place, const ByteSink& sink) {
    std::string buffer(std::size_t{1} << 16, '\0');
    medium.seekg(static_cast<std::streamoff>(place.offset));
    for (std::uint64_t left = place.size; left > 0;) {
        buffer.resize(std::min<std::uint64_t>(buffer.size(), left));
        if (!medium.read(buffer.data(), static_cast<std::streamsize>(buffer.size())))
            throw cutOff();
        sink(buffer);
        left -= buffer.size();
    }
}

} // namespace

void makeVolume(VolumeKind kind, const VolumeSource& source, const ByteSink& sink) {
    const ScratchFolder scratch;
    const fs::path made = scratch.path() / "volume";
    run(makerCommand(kind, source, made), scratch.path() / "errors");
    std::ifstream medium(made, std::ios::binary);
    // The maker writes a hybrid of both file systems. The HFS+ partition stands alone: it holds all files.
    pass(medium, kind == VolumeKind::iso ? Place{0, fs::file_size(made)} : hfsPartition(medium), sink);
}

std::string volumeOf(VolumeKind kind, const VolumeSource& source) {
    std::string volume;
    makeVolume(kind, source, [&](std::string_view bytes) { volume += bytes; });
    return volume;
}

} // namespace join::tools
