#pragma once

#include "images/ChildOutput.h"

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace join::test {

/// What 7zz writes; a status other than 0 throws std::runtime_error.
inline std::string sevenZip(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "7zz");
    tools::ChildOutput program(arguments);
    std::string said;
    std::array<char, 4096> buffer{};
    while (const std::size_t got = program.read(buffer.data(), buffer.size()))
        said.append(buffer.data(), got);
    program.finish();
    return said;
}

/// Whether 7zz finds an image well; the type as it knows it ("dmg", "hfs", "iso").
inline bool isWell(const std::string& image, const std::string& type) {
    try {
        return sevenZip({"t", "-t" + type, image}).find("Warnings:") == std::string::npos;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace join::test
