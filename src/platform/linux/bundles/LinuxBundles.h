#pragma once

#include "platform/Bundles.h"
#include "platform/FileManager.h"
#include "platform/PropertyLists.h"
#include "platform/linux/files/SystemRoot.h"

#include <utility>

namespace join::platform {

/// Bundles by the system's paths. The given services must outlive this object.
class LinuxBundles : public Bundles {
public:
    LinuxBundles(FileManager& files, PropertyLists& lists, SystemRoot root)
        : files_(files), lists_(lists), root_(std::move(root)) {}

    std::optional<Value> infoDictionary(const std::string& bundlePath) override;

    /// The executable must be a regular file that may be run, and no link inside the bundle may lead to it.
    std::string mainExecutable(const std::string& bundlePath) override;

private:
    FileManager& files_;
    PropertyLists& lists_;
    SystemRoot root_;
};

} // namespace join::platform
