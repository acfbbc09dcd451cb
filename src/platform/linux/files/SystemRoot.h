#pragma once

#include <string>

namespace join::platform {

/// Where the system's own folders, /Applications, /Volumes and /System, really are: below one folder of the
/// user, so that no rights of the administrator are needed. Text only, nothing is made. Any thread.
class SystemRoot {
public:
    /// The absolute path of the folder that stands for the system's root.
    explicit SystemRoot(const std::string& path);

    const std::string& path() const { return path_; }

    /// The real path of a path of the system. An absolute path is first normalised as text, so that ".."
    /// cannot step out of a system folder unseen: "/Volumes/../x" is "/x". One outside those folders stays
    /// what it is, and so does a relative one.
    std::string toReal(const std::string& systemPath) const;

    /// The system's path of a real path: the other way round.
    std::string toSystem(const std::string& realPath) const;

private:
    std::string path_;
    std::string resolved_; ///< the same without links, as the kernel tells the paths of running programs
};

/// The system root of the user with that home folder, below $XDG_DATA_HOME when that is an absolute path.
std::string defaultSystemRoot(const std::string& home);

} // namespace join::platform
