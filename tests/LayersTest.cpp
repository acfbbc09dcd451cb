#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace join::test {

namespace {

namespace fs = std::filesystem;

const fs::path sources = JOIN_SOURCE_DIR;

/// What each folder, with those in it, may include beside itself, from the ground up; "<>" are the headers of
/// libraries and of the system.
using Folder = std::pair<std::string, std::vector<std::string>>;
const std::vector<Folder> folders = {
    {"platform", {}},
    {"base", {"platform"}},
    {"session", {"base", "platform"}},
    {"params", {"session", "base", "platform"}},
    {"url", {"params", "session", "base", "platform"}},
    {"server", {"session", "base", "platform"}},
    {"diag", {"session", "base", "platform"}},
    {"ui", {"session", "base", "platform"}},
    {"install", {"diag", "ui", "session", "base", "platform"}},
    {"app", {"params", "url", "server", "install", "diag", "ui", "session", "base", "platform"}},
    {"platform/linux", {"platform", "<>"}},
    {"platform/qt", {"platform", "<>"}},
    {"", {"app", "platform", "platform/linux", "platform/qt", "<>"}},
};

/// The row of the innermost folder that holds the file, which is the last; nullptr when no row does.
const Folder* folderOf(const std::string& file) {
    const std::string parent = fs::path(file).parent_path();
    const Folder* innermost = nullptr;
    for (const Folder& folder : folders)
        if (parent == folder.first || parent.starts_with(folder.first + '/'))
            innermost = &folder;
    return innermost;
}

/// Whether files of this folder may include it; the kind is '<' or '"'.
bool isAllowed(const Folder& folder, char kind, const std::string& name) {
    const auto may = [&](const std::string& what) { return std::ranges::count(folder.second, what) == 1; };
    if (kind == '<') // headers of libraries and of the system have endings or capitals, those of C++ have not
        return may("<>") || name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_") == std::string::npos;
    if (name.find('/') == std::string::npos && !fs::exists(sources / name)) // a form, which the toolkit makes
        return may("<>");
    const Folder* const included = folderOf(name);
    return included && name.find("..") == std::string::npos &&
           (included == &folder || (included < &folder && may(included->first)));
}

} // namespace

TEST(Layers, EveryIncludePointsDownNoneGoesInACircleAndNoFileOrFolderIsLarge) {
    const std::regex include(R"re(^\s*#\s*include\b\s*(?:([<"])([^>"]*)[>"])?.*)re");
    std::map<fs::path, std::set<fs::path>> includes; // of each header with its source
    std::map<std::string, int> files;                // in each folder
    for (const auto& entry : fs::recursive_directory_iterator(sources)) {
        const std::string file = fs::relative(entry.path(), sources).generic_string();
        if (!std::regex_match(file, std::regex(R"(.*\.(cpp|h|in))")))
            continue;
        EXPECT_LE(++files[entry.path().parent_path()], 30) << file;
        const Folder* const folder = folderOf(file);
        ASSERT_TRUE(folder) << file << " is in a folder without a row";
        const fs::path unit = fs::path(file).replace_extension();
        std::ifstream stream(entry.path());
        std::smatch found;
        int lines = 0;
        for (std::string line; std::getline(stream, line); ++lines) {
            if (!std::regex_match(line, found, include))
                continue;
            EXPECT_TRUE(found[1].matched && isAllowed(*folder, *found[1].first, found[2]))
                << file << ": " << line;
            const fs::path included = fs::path(found[2].str()).replace_extension();
            if (included != unit)
                includes[unit].insert(included);
        }
        EXPECT_LE(lines, 250) << file;
    }
    EXPECT_GT(includes.size(), 80U);
    // What includes nothing that is left goes, until nothing goes.
    const auto isGround = [&](const auto& unit) {
        return std::ranges::none_of(unit.second, [&](const auto& name) { return includes.contains(name); });
    };
    while (std::erase_if(includes, isGround)) {
    }
    for (const auto& [unit, included] : includes)
        ADD_FAILURE() << unit << " is in a circle, or includes one";
}

} // namespace join::test
