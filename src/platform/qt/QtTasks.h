#pragma once

#include "platform/Tasks.h"
#include "platform/linux/SystemRoot.h"

#include <filesystem>

namespace join::platform {

/// Child processes on QProcess.
class QtTasks final : public Tasks {
public:
    /// The helpers' folder is where tools are looked for that the system does not have.
    QtTasks(SystemRoot root, std::filesystem::path helpersFolder);

    TaskResult run(const Program& program) override;
    void start(const Program& program) override;

    /// Starts the program in a session of its own, its standard streams on the null device, no descriptor
    /// inherited. True when it runs.
    bool startDetached(const Program& program);

private:
    /// Where the program really lies.
    std::string realPath(const std::string& program) const;

    SystemRoot root_;
    std::filesystem::path helpersFolder_;
};

} // namespace join::platform
