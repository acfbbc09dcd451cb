#include "service/WholeFile.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace join::tools {

void writeWholeFile(const std::string& path, std::string_view bytes) {
    const std::string beside = path + ".part";
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    file << bytes << std::flush;
    if (!file)
        throw std::runtime_error("cannot write " + beside);
    std::filesystem::rename(beside, path);
}

} // namespace join::tools
