#pragma once

#include "platform/Tasks.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/files/SystemRoot.h"
#include "platform/linux/process/Spawn.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace join::platform {

/// Child processes. Paths and arguments are bytes and need not be UTF-8.
class LinuxTasks : public Tasks {
public:
    /// The helpers' folder contains the tools that the system does not have. They are opened now and run from
    /// these descriptors, because the folder may be deleted before they are needed; so they cannot be
    /// scripts.
    LinuxTasks(SystemRoot root, std::filesystem::path helpersFolder);

    TaskResult run(const Program& program) override;
    void start(const Program& program) override;

    /// Starts the program in a session of its own, with its standard streams on the null device and no
    /// descriptor inherited. Returns true if it is running. A path without a folder names a helper.
    bool startDetached(const Program& program);

private:
    Child startChild(const Program& program, std::vector<int> streams, Spawn::Bond bond) const;

    /// Returns the real path of the program.
    std::string realPath(const std::string& program) const;

    SystemRoot root_;
    std::filesystem::path helpersFolder_;
    std::map<std::string, Descriptor> helpers_; ///< by name
};

} // namespace join::platform
