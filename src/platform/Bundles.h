#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>

namespace join::platform {

/// Application bundles, NAME.app/Contents/{Info.plist,MacOS,Resources}. Any thread.
class Bundles {
public:
    virtual ~Bundles() = default;

    /// The information property list of the bundle at that path; nothing when there is no such bundle or its
    /// list cannot be read.
    virtual std::optional<Value> infoDictionary(const std::string& bundlePath) = 0;

    /// The path of the bundle's main executable, the CFBundleExecutable in its MacOS folder. Throws Exception
    /// when the path holds no bundle, or the bundle names none, or one that would lie outside that folder.
    virtual std::string mainExecutable(const std::string& bundlePath) = 0;
};

} // namespace join::platform
