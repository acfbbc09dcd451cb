#include "platform/linux/scselect/ActiveConnections.h"

#include "platform/Exception.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/hdiutil/ChildProcess.h"
#include "platform/linux/hdiutil/Interruption.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace join::platform::scselect {

namespace {

using hdiutil::ChildProcess;
using hdiutil::Interruption;

constexpr std::size_t maximumAnswer = std::size_t{64} << 10;

std::vector<std::string> fieldsOf(std::string_view line) {
    std::vector<std::string> fields(1);
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 1 < line.size())
            fields.back() += line[++i];
        else if (line[i] == ':')
            fields.emplace_back();
        else
            fields.back() += line[i];
    }
    return fields;
}

/// All that the program says, when that is bounded and the program succeeds.
std::optional<std::string> answerOf(ChildProcess& program) {
    std::string answer;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = program.read(buffer.data(), buffer.size())) {
        if (count > maximumAnswer - answer.size())
            return std::nullopt;
        answer.append(buffer.data(), count);
    }
    if (program.finish() != 0)
        return std::nullopt;
    return answer;
}

} // namespace

std::vector<Connection> parseConnections(std::string_view text) {
    std::vector<Connection> connections;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::vector<std::string> fields = fieldsOf(line);
        if (fields.size() == 3 && fields[1] != "loopback")
            connections.push_back({fields[0], fields[1], fields[2]});
    }
    return connections;
}

std::vector<Connection> activeConnections(const NetworkManager& manager) {
    if (::access(manager.nmcli.c_str(), X_OK) != 0)
        return {};
    try {
        const Interruption interruption(manager.patience);
        const Descriptor nothing = openForReading(AT_FDCWD, "/dev/null");
        ChildProcess program({.path = manager.nmcli,
                              .arguments = {"-t", "-f", "NAME,TYPE,DEVICE", "connection", "show", "--active"},
                              .file = nothing.get()},
                             ChildProcess::Output::read, interruption);
        return parseConnections(answerOf(program).value_or(""));
    } catch (const Exception&) {
        return {};
    }
}

} // namespace join::platform::scselect
