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

/// Child processes. Paths and arguments are bytes, and need not be text.
class LinuxTasks final : public Tasks {
public:
    /// The helpers' folder holds the tools that the system does not have. They are opened now and run from
    /// there, as the folder may be deleted before they are needed; so they are no scripts.
    LinuxTasks(SystemRoot root, std::filesystem::path helpersFolder);

    TaskResult run(const Program& program) override;
    void start(const Program& program) override;

    /// Starts the program in a session of its own, its standard streams on the null device, no descriptor
    /// inherited. True when it runs. A path without a folder is one of the helpers.
    bool startDetached(const Program& program);

private:
    pid_t startChild(const Program& program, std::vector<int> streams, Spawn::Bond bond) const;

    /// Where the program really lies.
    std::string realPath(const std::string& program) const;

    SystemRoot root_;
    std::filesystem::path helpersFolder_;
    std::map<std::string, Descriptor> helpers_; ///< by name
};

} // namespace join::platform
