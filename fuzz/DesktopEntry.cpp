// The paths in a desktop entry: the program's, which may be in any folder, and its icon's.

#include "platform/linux/helpers/register-scheme/DesktopEntry.h"
#include "Target.h"
#include "platform/Utf8.h"

#include <algorithm>

namespace join::fuzz {

namespace {

/// The value of a key as a reader of the file sees it, with its escapes resolved.
std::string valueOf(const std::string& text, const std::string& key) {
    const auto begin = text.find("\n" + key + "=") + key.size() + 2;
    const std::string raw = text.substr(begin, text.find('\n', begin) - begin);
    std::string value;
    for (std::size_t i = 0; i < raw.size(); ++i)
        value += raw[i] == '\\' ? raw.at(++i) : raw[i];
    return value;
}

/// The program of a command line, possibly started through env and followed by the argument for the URL.
std::string programOf(std::string command) {
    if (const std::string env = "/usr/bin/env "; command.starts_with(env))
        command.erase(0, env.size());
    const bool isQuoted = command.starts_with('"');
    const char end = isQuoted ? '"' : ' ';
    std::string word;
    std::size_t i = isQuoted ? 1 : 0;
    for (; command.at(i) != end; ++i) {
        if (command[i] == '%' || (isQuoted && command[i] == '\\'))
            ++i;
        word += command.at(i);
    }
    require(command.substr(i + (isQuoted ? 1 : 0)) == " %u");
    return word;
}

} // namespace

void tryOut(std::string_view input) {
    const std::string executable = "/" + std::string(takeText(input));
    const std::string icon = "/" + std::string(input);
    const auto text = platform::desktopEntryText(executable, icon);
    if (!text)
        return;
    require(platform::isUtf8(*text));
    require(std::ranges::count(*text, '\n') ==
            std::ranges::count(*platform::desktopEntryText("/a", "b"), '\n'));
    require(programOf(valueOf(*text, "Exec")) == executable);
    require(valueOf(*text, "TryExec") == executable && valueOf(*text, "Icon") == icon);
}

} // namespace join::fuzz
