#include "standins/StandIns.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace join::tools {
namespace {

namespace fs = std::filesystem;

/// Notes the start in $name. Uses only the shell's built-ins, so every byte survives.
constexpr std::string_view noteStart = R"sh(
LC_ALL=C
folder=${TAVO_STANDIN_LOG:-$HOME/tavo-standin}
newline='
'

# replace TEXT OLD NEW: sets $text to TEXT with every OLD replaced by NEW.
replace() {
    text= rest=$1
    while part=${rest%%"$2"*} && [ "$part" != "$rest" ]; do
        text=$text$part$3 rest=${rest#*"$2"}
    done
    text=$text$rest
}

# note NAME TEXT: adds a line to $record.
note() {
    replace "$2" '\' '\\'
    replace "$text" "$newline" '\n'
    record="$record$1 $text$newline"
}

cd -P . 2>/dev/null
record="start$newline"
note directory "$PWD"
for argument in "$@"; do
    note argument "$argument"
done
mkdir -p "$folder"
printf '%send\n' "$record" >>"$folder/$name"
)sh";

/// The pause is a child, not an exec, so that the process keeps the script's path.
constexpr std::string_view pauseAndEnd = R"sh(
sleep "$seconds" >/dev/null 2>&1 &
trap 'kill $!; exit 143' TERM
wait
exit 0
)sh";

std::string script(std::string_view name, std::string_view seconds) {
    return "name=" + std::string(name) + " seconds=" + std::string(seconds) + std::string(noteStart) +
           std::string(pauseAndEnd);
}

std::string escapedForXml(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '&')
            escaped += "&amp;";
        else if (c == '<')
            escaped += "&lt;";
        else
            escaped += c;
    }
    return escaped;
}

std::string informationList(std::string_view identifier, std::string_view version, std::string_view program) {
    const auto entry = [](std::string_view key, std::string_view text) {
        return "    <key>" + std::string(key) + "</key>\n    <string>" + escapedForXml(text) + "</string>\n";
    };
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n<dict>\n" +
           entry("CFBundleIdentifier", identifier) + entry("CFBundleName", program) +
           entry("CFBundleExecutable", program) + entry("CFBundleShortVersionString", version) +
           "</dict>\n</plist>\n";
}

void writeFile(const fs::path& path, std::string_view contents) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!file.flush())
        throw std::system_error(errno, std::generic_category(), path.string());
}

void writeProgram(const fs::path& path, std::string_view contents) {
    fs::remove(path);
    writeFile(path, contents);
    fs::permissions(path, fs::perms{0755});
}

// Offsets and sizes of the Mach-O format, as far as this layout needs them.
constexpr std::size_t commandCountOffset = 16;
constexpr std::size_t commandOffset = 32;
constexpr std::size_t sectionOffset = commandOffset + 72;
constexpr std::size_t headerSize = sectionOffset + 80;
constexpr std::uint32_t segmentCommand64 = 25;

void put(std::string& bytes, std::size_t offset, std::string_view text) {
    bytes.replace(offset, text.size(), text);
}

template <typename Number>
void putNumber(std::string& bytes, std::size_t offset, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i)
        bytes[offset + i] = static_cast<char>(number >> (8 * i) & 0xFFU);
}

bool holdsLineFeed(std::uint64_t number) {
    for (; number != 0; number >>= 8)
        if ((number & 0xFFU) == '\n')
            return true;
    return false;
}

} // namespace

void makeAgentBundle(const fs::path& bundle, std::string_view version) {
    const fs::path contents = bundle / "Contents";
    const fs::path resources = contents / "Resources";
    fs::remove_all(bundle);
    fs::create_directories(contents / "MacOS");
    fs::create_directories(resources / "en.lproj");

    writeFile(contents / "Info.plist", informationList(agentIdentifier, version, "Tavo"));
    writeFile(contents / "PkgInfo", "APPL????");
    writeFile(resources / "ReadMe.txt", "A stand-in: it notes how it was started and ends by itself.\n");
    writeFile(resources / "en.lproj" / "InfoPlist.strings", "CFBundleDisplayName = \"Tavo\";\n");
    fs::create_symlink("en.lproj", resources / "English.lproj");
    writeProgram(contents / "MacOS" / "Tavo",
                 "#!/bin/sh\n" + script("agent.txt", "\"${TAVO_STANDIN_SECONDS:-5}\""));
}

void makeCrashDetector(const fs::path& file, std::string_view version) {
    writeProgram(file, crashDetectorBytes(version));
}

std::string crashDetectorBytes(std::string_view version) {
    // The header is a comment in the second line; a line feed in one of its numbers would end it. The
    // interpreter is dash by name: bash refuses scripts with a NUL among their first 80 bytes.
    std::string list = informationList(crashDetectorIdentifier, version, "TavoCrashDetector");
    while (holdsLineFeed(list.size()))
        list += '\n';
    std::string body = "\n" + script("crashdetector.txt", "1");
    while (holdsLineFeed(headerSize + body.size()))
        body += '\n';

    std::string header(headerSize, '\0');
    put(header, 0, "#!/bin/dash\n#");
    putNumber(header, commandCountOffset, std::uint32_t{1});
    putNumber(header, commandOffset, segmentCommand64);
    putNumber(header, commandOffset + 4, std::uint32_t{headerSize - commandOffset});
    put(header, commandOffset + 8, "__TEXT");
    putNumber(header, commandOffset + 64, std::uint32_t{1});
    put(header, sectionOffset, "__info_plist");
    put(header, sectionOffset + 16, "__TEXT");
    putNumber(header, sectionOffset + 40, std::uint64_t{list.size()});
    putNumber(header, sectionOffset + 48, static_cast<std::uint32_t>(headerSize + body.size()));
    return header + body + list;
}

} // namespace join::tools
