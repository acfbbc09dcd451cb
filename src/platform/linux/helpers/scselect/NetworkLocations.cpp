#include "platform/linux/helpers/scselect/NetworkLocations.h"

#include "platform/Exception.h"
#include "platform/linux/system/LogText.h"

#include <unistd.h>

namespace join::platform::scselect {

namespace {

constexpr std::size_t maximumOutput = 15'000; ///< in bytes; each may become four

/// Returns the beginning of the tool's output, or nothing if it fails or takes too long.
std::string outputOf(const ChildProgram& tool, const Interruption& interruption) {
    try {
        ChildProcess program(tool, ChildProcess::Output::read, interruption);
        std::string output(maximumOutput, '\0');
        std::size_t size = 0;
        while (const std::size_t count = program.read(output.data() + size, output.size() - size))
            size += count;
        output.resize(size);
        return size == maximumOutput || program.finish() == 0 ? output : "";
    } catch (const Exception&) {
        return "";
    }
}

} // namespace

const std::vector<ChildProgram> toolsOfTheSystem{
    {"/usr/bin/nmcli", {"--colors", "no", "-f", "NAME,TYPE,DEVICE", "connection", "show", "--active"}},
    {"/usr/sbin/ip", {"-brief", "address", "show", "up"}},
    {"/usr/bin/ip", {"-brief", "address", "show", "up"}}};

std::string networkLocations(const std::vector<ChildProgram>& tools, std::chrono::milliseconds patience) {
    const Interruption interruption(patience);
    for (const ChildProgram& tool : tools) {
        if (::access(tool.path.c_str(), X_OK) != 0)
            continue;
        if (const std::string output = outputOf(tool, interruption); !output.empty())
            return "Network connections of this computer:\n" + escapedForLog(output);
    }
    return "No network connection is known\n";
}

} // namespace join::platform::scselect
