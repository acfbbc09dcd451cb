#include "diag/EmbeddedPropertyList.h"

#include "support/MachOImage.h"

#include <gtest/gtest.h>

#include <vector>

namespace join::test {

/// The list that is found in the image; "none" without one.
std::string found(const std::string& image) {
    const std::vector<char> bytes(image.begin(), image.end()); // exactly as long, for the address sanitizer
    const auto data = embeddedPropertyList(std::as_bytes(std::span(bytes)));
    return data ? std::string(reinterpret_cast<const char*>(data->data()), data->size()) : "none";
}

std::string list(std::uint32_t offset, std::uint64_t size = 4) {
    return machSection("__info_plist", size, offset);
}

TEST(EmbeddedPropertyList, IsTheSectionOfThatNameInTheTextSegmentAndNothingBeyondTheEnd) {
    constexpr std::uint32_t huge = 0xFFFFFFFF;
    const std::string other = littleEndian(2U) + littleEndian(16U) + std::string(8, 'o');
    const std::string code = machSection("__text", 1, 0);
    const auto withList = [](std::uint32_t offset, std::uint64_t size) {
        return machHeader(1) + machSegment("__TEXT", 152, 1, list(offset, size)) + "list";
    };
    const std::pair<std::string, const char*> cases[] = {
        {machImage("list"), "list"},
        {machImage(""), ""},
        {machImage("list", "__DATA"), "none"},
        {machImage("list", "__TEXT", "__info_plist2"), "none"},
        {machHeader(3) + other + machSegment("__TEXT", 72, 0) + machSegment("__TEXT", 152, 1, list(272)) +
             "list",
         "list"},
        {machHeader(2) + machSegment("__DATA", 152, 1, list(336)) + machSegment("__TEXT", 152, 1, list(340)) +
             "datalist",
         "list"},
        {machHeader(1) + machSegment("__TEXT", 232, 2, code + list(264)) + "list", "list"},
        // The next command follows the sections, whatever size this one claims.
        {machHeader(2) + machSegment("__TEXT", 9, 1, code) + machSegment("__TEXT", 9, 1, list(336)) + "list",
         "list"},
        {machHeader(1) + other + machSegment("__TEXT", 152, 1, list(200)) + "list", "none"},
        {machHeader(huge) + machSegment("__TEXT", 0, 1, list(184)) + "list", "none"}, // would never advance
        {machHeader(2) + littleEndian(2U) + littleEndian(huge) + machSegment("__TEXT", 152, 1, list(0)),
         "none"},
        {machHeader(1) + machSegment("__TEXT", huge, 1, list(184)) + "list", "none"},
        {machHeader(1) + machSegment("__TEXT", 152, huge, machSection("__text", 0, 0)), "none"},
        {withList(184, 5), "none"},
        {withList(184, ~std::uint64_t{0} - 100), "none"},
        {withList(184, (std::uint64_t{1} << 32) + 4), "none"},
        {withList(huge, 4), "none"},
    };
    for (const auto& [image, expected] : cases)
        EXPECT_EQ(found(image), expected);
    const std::string whole = machImage("list");
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(found(whole.substr(0, size)), "none") << size;
}

} // namespace join::test
