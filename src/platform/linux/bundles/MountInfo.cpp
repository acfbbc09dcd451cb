#include "platform/linux/bundles/MountInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>

namespace join::platform {

namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

/// Decodes a field, in which blanks, line breaks and backslashes are a backslash and three octal digits.
std::string unescaped(std::string_view field) {
    std::string text;
    while (!field.empty()) {
        unsigned code = 0;
        const std::string_view octal = field.front() == '\\' ? field.substr(1, 3) : std::string_view();
        const auto [end, error] = std::from_chars(octal.data(), octal.data() + octal.size(), code, 8);
        const bool isEscape =
            octal.size() == 3 && error == std::errc() && end == octal.data() + 3 && code < 256;
        text += isEscape ? static_cast<char>(code) : field.front();
        field.remove_prefix(isEscape ? 4 : 1);
    }
    return text;
}

bool isWritable(std::string_view options) {
    const auto list = split(options, ',');
    return std::find(list.begin(), list.end(), "rw") != list.end();
}

/// Parses "ID PARENT MAJOR:MINOR ROOT PATH OPTIONS [TAG]... - TYPE SOURCE OPTIONS".
std::optional<Mount> parseLine(std::string_view line) {
    constexpr std::ptrdiff_t fieldsBeforeTags = 6;
    const auto fields = split(line, ' ');
    if (std::ssize(fields) < fieldsBeforeTags)
        return std::nullopt;
    const auto separator = std::find(fields.begin() + fieldsBeforeTags, fields.end(), "-");
    if (fields.end() - separator != 4)
        return std::nullopt;
    int major = 0;
    int minor = 0;
    int length = 0;
    const std::string device(fields[2]);
    if (std::sscanf(device.c_str(), "%9d:%9d%n", &major, &minor, &length) != 2 || device[length] != 0 ||
        !fields[4].starts_with('/'))
        return std::nullopt;
    return Mount{.major = major,
                 .minor = minor,
                 .path = unescaped(fields[4]),
                 .type = unescaped(separator[1]),
                 .source = unescaped(separator[2]),
                 .writable = isWritable(fields[5]) && isWritable(separator[3])};
}

bool liesBelow(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
}

} // namespace

std::vector<Mount> parseMountInfo(std::string_view text) {
    std::vector<Mount> mounts;
    for (const std::string_view line : split(text, '\n'))
        if (auto mount = parseLine(line))
            mounts.push_back(std::move(*mount));
    return mounts;
}

bool isServedByProgram(const Mount& mount) {
    constexpr std::array<std::string_view, 10> remote{
        "fuse.ceph",   "fuse.curlftpfs", "fuse.davfs",  "fuse.glusterfs", "fuse.gvfsd-fuse",
        "fuse.jmtpfs", "fuse.portal",    "fuse.rclone", "fuse.s3fs",      "fuse.sshfs"};
    return mount.type == "fuse" || mount.type == "fuseblk" ||
           (mount.type.starts_with("fuse.") && std::ranges::find(remote, mount.type) == remote.end());
}

bool isLocalVolume(const Mount& mount) {
    // These manage their devices themselves and are mounted under a number that belongs to no device.
    constexpr std::array<std::string_view, 4> ownDevices{"bcachefs", "btrfs", "overlay", "zfs"};
    return mount.major != 0 || isServedByProgram(mount) ||
           std::find(ownDevices.begin(), ownDevices.end(), mount.type) != ownDevices.end();
}

bool isUnmountable(std::string_view path, std::string_view home) {
    constexpr std::array<std::string_view, 4> folders{"/media", "/mnt", "/run/media", "/Volumes"};
    const auto holds = [path](std::string_view folder) { return liesBelow(path, folder); };
    return std::any_of(folders.begin(), folders.end(), holds) || (!home.empty() && holds(home));
}

} // namespace join::platform
