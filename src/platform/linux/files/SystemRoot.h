#pragma once

#include <string>

namespace join::platform {

/// Maps the system's own folders, /Applications, /Volumes and /System, to real ones below one folder of the
/// user, so that no administrator rights are needed. Works on text only and creates nothing. Any thread.
class SystemRoot {
public:
    /// Takes the absolute path of the folder that stands for the system's root.
    explicit SystemRoot(const std::string& path);

    const std::string& path() const { return path_; }

    /// Returns the real path for a system path. An absolute path is first normalised as text, so that ".."
    /// cannot leave a system folder unnoticed: "/Volumes/../x" is "/x". Paths outside those folders and
    /// relative paths are returned unchanged.
    std::string toReal(const std::string& systemPath) const;

    /// Returns the system path for a real path: the inverse of toReal().
    std::string toSystem(const std::string& realPath) const;

private:
    std::string path_;
    std::string resolved_; ///< without links, like the kernel's paths of running programs
};

/// Returns the system root of the user with that home folder, below $XDG_DATA_HOME if that is an absolute
/// path.
std::string defaultSystemRoot(const std::string& home);

} // namespace join::platform
