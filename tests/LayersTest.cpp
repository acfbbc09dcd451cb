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

/// Whether it is a header of C++: those of libraries and of the system have endings or capitals.
bool isStandard(const std::string& name) {
    return name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_") == std::string::npos;
}

/// What each folder, with those in it, may include beside itself; from the ground up.
struct Folder {
    std::string path;
    std::vector<std::string> mayInclude = {};
    bool seesLibraries = false;
};
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
    {"platform/linux", {"platform"}, true},
    {"platform/qt", {"platform"}, true},
    {"", {"app", "platform", "platform/linux", "platform/qt"}, true},
};

/// The row of the innermost folder that holds the file; nullptr when no row does.
const Folder* folderOf(const std::string& file) {
    const std::string parent = fs::path(file).parent_path();
    const Folder* innermost = nullptr;
    for (const Folder& folder : folders)
        if (folder.path.empty() ? parent.empty() : (parent + '/').starts_with(folder.path + '/'))
            if (!innermost || folder.path.size() > innermost->path.size())
                innermost = &folder;
    return innermost;
}

/// Whether it is a file of ours, or made from one.
bool isOurs(const std::string& name) {
    return fs::exists(sources / name) || fs::exists(sources / (name + ".in"));
}

/// Whether files of this folder may include it; the kind is '<' or '"'.
bool isAllowed(const Folder& folder, char kind, const std::string& name) {
    if (kind == '<')
        return folder.seesLibraries || isStandard(name);
    if (!isOurs(name) && !folder.seesLibraries)
        return false;
    if (name.find('/') == std::string::npos && !isOurs(name)) // a form, which the toolkit makes
        return true;
    const Folder* const included = folderOf(name);
    return included && name.find("..") == std::string::npos &&
           (included == &folder || std::ranges::count(folder.mayInclude, included->path) == 1);
}

/// A header and its source are one.
std::string unitOf(const std::string& file) { return fs::path(file).replace_extension().generic_string(); }

} // namespace

TEST(Layers, EveryIncludePointsDownAndNoneGoesRoundInACircle) {
    for (auto row = folders.begin(); row != folders.end(); ++row)
        for (const std::string& below : row->mayInclude)
            EXPECT_TRUE(std::ranges::find(folders.begin(), row, below, &Folder::path) != row)
                << row->path << below;
    const std::regex include(R"re(^\s*#\s*include\b\s*(?:([<"])([^>"]*)[>"])?.*)re");
    std::map<std::string, std::set<std::string>> includes; // of each unit
    int filesRead = 0;
    for (const auto& entry : fs::recursive_directory_iterator(sources)) {
        const std::string file = fs::relative(entry.path(), sources).generic_string();
        if (!std::regex_match(file, std::regex(R"(.*\.(cpp|h|in))")))
            continue;
        ++filesRead;
        const Folder* const folder = folderOf(file);
        ASSERT_TRUE(folder) << file << " is in a folder without a row";
        std::ifstream stream(entry.path());
        std::smatch found;
        for (std::string line; std::getline(stream, line);) {
            if (!std::regex_match(line, found, include))
                continue;
            EXPECT_TRUE(found[1].matched && isAllowed(*folder, *found[1].first, found[2]))
                << file << ": " << line;
            if (isOurs(found[2]) && unitOf(found[2]) != unitOf(file))
                includes[unitOf(file)].insert(unitOf(found[2]));
        }
    }
    EXPECT_GT(filesRead, 150);
    // What includes nothing that is left, or is included by nothing that is left, goes until nothing goes: what
    // stays is in a circle, or between two.
    const auto isOutside = [&](const auto& unit) {
        return std::ranges::none_of(unit.second, [&](const auto& name) { return includes.contains(name); }) ||
               std::ranges::none_of(includes,
                                    [&](const auto& other) { return other.second.contains(unit.first); });
    };
    while (std::erase_if(includes, isOutside)) {
    }
    for (const auto& [unit, included] : includes)
        ADD_FAILURE() << unit << " is in a circle";
}

} // namespace join::test
