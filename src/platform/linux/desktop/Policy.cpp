#include "platform/linux/desktop/Policy.h"

#include "platform/Utf8.h"
#include "platform/linux/files/Descriptor.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <utility>

namespace join::platform {

namespace {

constexpr std::size_t maximumSize = std::size_t{64} << 10; ///< in bytes
constexpr std::string_view digits = "0123456789";
constexpr const char* group = "Trust";
constexpr const char* key = "WebServers";

/// Returns the host of a server in lower case, or an empty text if it is not a host with an optional port. The
/// host may be an IPv6 address in brackets.
std::string hostOf(std::string_view server) {
    const bool isAddress = server.starts_with('[');
    const std::size_t end = isAddress ? std::min(server.find(']'), server.size() - 1) + 1
                                      : std::min(server.find(':'), server.size());
    std::string host(server.substr(0, end));
    for (char& letter : host)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    const std::string_view port = server.substr(end);
    const bool hasPort = port.starts_with(':') && port.find_first_not_of(digits, 1) == std::string_view::npos;
    const std::string_view characters =
        isAddress ? "0123456789abcdef:.[]" : "0123456789abcdefghijklmnopqrstuvwxyz-._";
    const bool isHost = host.find_first_not_of(characters) == std::string::npos && !host.starts_with('.');
    return isHost && (port.empty() || hasPort) ? host : std::string();
}

} // namespace

Policy Policy::ofComputer() {
    const char* variable = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream folders(variable && *variable ? variable : "/etc/xdg");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string path = folder + "/tavojoin/policy.conf";
        if (!path.starts_with('/'))
            continue;
        const Descriptor file = openForReading(AT_FDCWD, path.c_str());
        if (!file && (errno == ENOENT || errno == ENOTDIR))
            continue;
        struct stat found {};
        const bool isFile = file && ::fstat(file.get(), &found) == 0 && S_ISREG(found.st_mode);
        const auto text = isFile ? readAll(file.get(), maximumSize) : std::nullopt;
        return {text.value_or(std::string(1, '\0')), path}; // what cannot be read is not a policy
    }
    return {};
}

Policy::Policy(std::string_view text, std::string path) : path_(std::move(path)) { trouble_ = parse(text); }

std::string Policy::parse(std::string_view text) {
    allowsAll_ = false;
    if (!isUtf8(text) || text.find('\0') != std::string_view::npos)
        return "it cannot be read as a text";
    g_autoptr(GKeyFile) file = g_key_file_new();
    g_autoptr(GError) error = nullptr;
    if (!g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, &error))
        return error->message;
    allowsAll_ = !g_key_file_has_key(file, group, key, nullptr);
    if (allowsAll_)
        return {};
    g_auto(GStrv) entries = g_key_file_get_string_list(file, group, key, nullptr, &error);
    if (!entries)
        return error->message;
    for (char** entry = entries; *entry; ++entry) {
        const std::string_view pattern = g_strstrip(*entry);
        const bool isBelow = pattern.starts_with("*.");
        const std::string host = hostOf(isBelow ? pattern.substr(2) : pattern);
        if (host.empty() && !pattern.empty())
            return "its list holds something else: " + std::string(pattern);
        if (!host.empty())
            hosts_.push_back(isBelow ? "." + host : host);
    }
    return hosts_.empty() ? "its list is empty" : "";
}

std::optional<std::string> Policy::reasonToRefuse(std::string_view server) const {
    const std::string host = hostOf(server);
    const auto matches = [&](const std::string& allowed) {
        return allowed.starts_with('.') ? host.ends_with(allowed) : host == allowed;
    };
    if (allowsAll_ || (!host.empty() && trouble_.empty() && std::ranges::any_of(hosts_, matches)))
        return std::nullopt;
    return std::string(server) + " is not a web server that " + path_ + " allows" +
           (trouble_.empty() ? "" : ", since " + trouble_);
}

} // namespace join::platform
