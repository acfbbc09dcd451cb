#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>

namespace join::platform {

/// Application bundles, NAME.app/Contents/{Info.plist,MacOS,Resources}. Any thread.
class Bundles {
public:
    virtual ~Bundles() = default;

    /// Returns the information property list of the bundle at that path, or nothing if there is no such
    /// bundle or its list cannot be read.
    virtual std::optional<Value> infoDictionary(const std::string& bundlePath) = 0;

    /// Returns the path of the bundle's main executable: the file in its MacOS folder that CFBundleExecutable
    /// names. Throws Exception if the path is not a bundle, or the bundle names no executable, an empty one or
    /// one outside that folder.
    virtual std::string mainExecutable(const std::string& bundlePath) = 0;
};

} // namespace join::platform
