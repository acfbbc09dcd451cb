#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

namespace join::test {

namespace {

namespace fs = std::filesystem;

const fs::path sources = JOIN_SOURCE_DIR;

/// The headers of C++20, each between two blanks.
const std::string standardHeaders =
    " algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono "
    "cinttypes "
    "climits clocale cmath compare complex concepts condition_variable coroutine csetjmp csignal cstdarg "
    "cstddef "
    "cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format "
    "forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator "
    "latch "
    "limits list locale map memory memory_resource mutex new numbers numeric optional ostream queue random "
    "ranges "
    "ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept "
    "stop_token "
    "streambuf string string_view syncstream system_error thread tuple type_traits typeindex typeinfo "
    "unordered_map "
    "unordered_set utility valarray variant vector version ";

bool seesLibraries(const std::string& file) {
    return file == "main.cpp" || file == "JoinApp.cpp" || file.starts_with("platform/qt/") ||
           file.starts_with("platform/linux/");
}

/// Whether the logic may include it; the kind is '<' or '"'.
bool isAllowed(char kind, const std::string& name) {
    if (kind == '<')
        return standardHeaders.find(" " + name + " ") != std::string::npos;
    const bool isOurs = name == "base/ServiceSettings.h" || fs::exists(sources / name);
    return isOurs && !seesLibraries(name) && name.find("..") == std::string::npos;
}

} // namespace

TEST(Layers, TheLogicSeesNothingButTheStandardLibraryAndItself) {
    const std::regex include(R"re(^\s*#\s*include\b\s*(?:([<"])([^>"]*)[>"])?.*)re");
    int filesRead = 0;
    for (const auto& entry : fs::recursive_directory_iterator(sources)) {
        const std::string file = fs::relative(entry.path(), sources).generic_string();
        if (!entry.is_regular_file() || seesLibraries(file))
            continue;
        ++filesRead;
        std::ifstream stream(entry.path());
        std::smatch found;
        for (std::string line; std::getline(stream, line);) {
            const bool isInclude = std::regex_match(line, found, include);
            EXPECT_TRUE(!isInclude || (found[1].matched && isAllowed(*found[1].first, found[2])))
                << file << ": " << line;
        }
    }
    EXPECT_GT(filesRead, 60);
}

} // namespace join::test
