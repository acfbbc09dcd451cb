#include "platform/linux/documents/PlistPropertyLists.h"

#include "platform/linux/documents/NlohmannJson.h"

#include <gtest/gtest.h>

namespace {

using namespace join::platform;
using namespace std::string_literals;

/// The list as JSON, "nothing" when it is refused.
std::string read(const std::string& bytes) {
    const auto value = PlistPropertyLists().parse(bytes);
    return value ? NlohmannJson().serialise(*value) : "nothing";
}

std::string xml(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">" +
           content + "</plist>\n";
}

std::string repeated(int count, const std::string& text) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string bigEndian(std::uint64_t number, int size) {
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

/// A binary list of these objects, the first on top. An offset has two bytes, a reference one.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(bytes.size(), 2);
        bytes += object;
    }
    const auto tableOffset = bytes.size();
    return bytes + table + "\0\0\0\0\0\0\2\1"s + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(tableOffset, 8);
}

/// Object number n refers to number n + 1 in all its elements.
std::string chain(std::size_t length, const std::string& elementsOfEach, const std::string& last) {
    std::vector<std::string> objects;
    for (std::size_t next = 1; next <= length; ++next)
        objects.push_back(elementsOfEach +
                          repeated(elementsOfEach[0] & 0xF, std::string(1, static_cast<char>(next))));
    objects.push_back(last);
    return binary(objects);
}

TEST(PlistPropertyLists, ReadXmlLists) {
    EXPECT_EQ(read("\xEF\xBB\xBF\n" +
                   xml("<dict><key>b</key><string>a &lt; \xC3\xA9</string><key>a</key><array><true/><false/>"
                       "<integer>-7</integer><integer>+0x1F</integer><real>2.5</real><string/><dict/></"
                       "array><!-- <dict> -->"
                       "<key>d</key><data>D+E=</data><key>t</key><date>2026-11-22T21:56:36Z</date></dict>")),
              "{\"b\":\"a < \xC3\xA9\",\"a\":[true,false,-7,31,2.5,\"\",{}],\"d\":\"<0fe1>\","
              "\"t\":\"2026-11-22 21:56:36 +0000\"}");
}

TEST(PlistPropertyLists, ReadBinaryLists) {
    EXPECT_EQ(
        read(binary({"\xD3\x01\x02\x03\x04\x05\x06"s, "Qb", "Qa", "Qd", "\x5F\x10\x10" + "sixteen letters!"s,
                     "\xAA\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10"s, "\x42\x0F\xE1"s, "\x09", "\x10\x2A",
                     "\x65\x00\xE9\x65\xE5\xD8\x3D\xDE\x00\x00z"s, "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xF9",
                     "\x80\x05"s, "\x14\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x07"s, "\x22\xC0\x20\0\0"s,
                     "\x33\x41\xC8\x59\xCE\x4A\0\0\0"s, "\x33\x7F\xE0\0\0\0\0\0\0"s, "\x60"})),
        "{\"b\":\"sixteen "
        "letters!\",\"a\":[true,42,\"\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80z\",-7,\"5\",7,-2.5,"
        "\"2026-11-22 21:56:36 +0000\",\"9999-12-31 23:59:59 +0000\",\"\"],\"d\":\"<0fe1>\"}");
}

TEST(PlistPropertyLists, ListsThatAreCutOffGiveNothing) {
    for (const std::string& whole :
         {xml("<dict><key>a</key><string>b</string></dict>"),
          binary({"\xD2\x01\x02\x03\x04"s, "Qa", "\x61\x00\xE9"s, "\xA2\x05\x05", "\x09", "\x10\x2A"})}) {
        ASSERT_NE(read(whole), "nothing");
        for (std::size_t length = 0; length <= whole.find_last_not_of('\n'); ++length)
            EXPECT_EQ(read(whole.substr(0, length)), "nothing") << length;
    }
}

TEST(PlistPropertyLists, OtherFormsBrokenListsAndThoseOutOfProportionGiveNothing) {
    for (const std::string& withinProportion :
         {xml(repeated(512, "<array>") + repeated(512, "</array>")),
          xml("<array>" + repeated(600, "<array></array><dict/>") + "</array>"), chain(200, "\xA1", "\x09"),
          chain(10, "\xA2", "\x09")})
        EXPECT_NE(read(withinProportion), "nothing") << withinProportion;
    const std::string mebibyte(std::size_t{1} << 20, ' ');
    const std::string large = "\x5F\x11\x40\x00"s + std::string(0x4000, 'x');
    // A byte each from 6: sizes of offset and reference. Eight from 8: number of objects, top one, table's place.
    const auto withTrailer = [list = binary({"\xA1\x01", "\x09"})](std::size_t at, std::uint64_t number) {
        const int size = at < 8 ? 1 : 8;
        return std::string(list).replace(list.size() - 32 + at, size, bigEndian(number, size));
    };
    const std::vector<std::string> refused[] = {
        // other forms
        {"", "{a = b;}", "{\"a\":1}", "<html></html>", "bplist00", "bplist01" + std::string(64, '\0')},
        // broken lists
        {"<plist></plist>", xml(""), xml("<dict></array>"), xml("<surprise/>"), "<dict></dict>",
         xml("<true/><true/>"), xml("<dict><true/></dict>"), xml("<dict><key>a</key></dict>"),
         xml("<array><key>a</key></array>"), xml("<dict><key>a</key><key>b</key><true/></dict>"),
         xml("<array>a</array>"), xml("<string><true/></string>"),
         xml("<array><string>\xFF</string></array>"), xml("<!-- ")},
        // large, deep, with many elements, with entities
        {xml("<array>" + mebibyte + "</array>"), xml(repeated(513, "<array>") + repeated(513, "</array>")),
         xml(repeated(100'000, "<dict>")),
         xml(repeated(513, "<array><!--</array>-->") + repeated(513, "</array>")),
         xml("<array>" + repeated(10'000, "<true/>") + "</array>"),
         "<!DOCTYPE plist [<!ENTITY e 'x'>]><plist><string/></plist>", xml("<string>&e;</string>")},
        // cycles of one and of two, exponential growth, a large text very often, a reference that leads outside
        {binary({"\xA1\x00"s}), binary({"\xA1\x01", "\xD1\x02\x00"s, "Qa"}), chain(60, "\xA2", "\x09"),
         chain(3, "\xAA", large), binary({"\xA1\x07"})},
        // keys that are no text or hold a NUL, a text and an array longer than the list
        {binary({"\xD1\x01\x01", "\x09"}), binary({"\xD1\x01\x02"s, "\x52x\0"s, "\x09"}),
         binary({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}),
         binary({"\xAF\x13\x20\x00\x00\x00\x00\x00\x00\x00"s})},
        // half a character, UTF-16 with a NUL, an unknown kind, an integer of 32 bytes
        {binary({"\x61\xD8\x3D"}), binary({"\x62\0x\0\0"s}), binary({"\xB0"}),
         binary({"\x15" + std::string(32, '\1')})},
        {withTrailer(6, 0), withTrailer(6, 9), withTrailer(7, 0), withTrailer(7, 9), withTrailer(8, 0),
         withTrailer(8, 4097), withTrailer(8, 1ULL << 63U), withTrailer(16, 2), withTrailer(24, 0),
         withTrailer(24, ~0ULL), withTrailer(24, 15)}};
    for (const auto& kind : refused)
        for (const std::string& bytes : kind)
            EXPECT_EQ(read(bytes), "nothing") << &kind - refused << ": " << bytes.substr(0, 300);
}

std::string nested(int depth) { return repeated(depth, "[") + repeated(depth, "]"); }

TEST(NlohmannJson, DocumentsComeBackCompactInTheirOrder) {
    const std::pair<std::string, std::string> documents[] = {
        {" { \"b\" : 1 , \"a\" : [ ] , \"b\" : { } } ", R"({"b":1,"a":[],"b":{}})"},
        {"\xEF\xBB\xBF[]", "[]"},
        {R"([null,true,false,-1,2.5,"\u00e9\n\"/"])", "[null,true,false,-1,2.5,\"\xC3\xA9\\n\\\"/\"]"},
        {"[9223372036854775807,9223372036854775808,1e2]",
         "[9223372036854775807,9.223372036854776e+18,100.0]"},
        {nested(512), nested(512)},
    };
    NlohmannJson json;
    for (const auto& [text, expected] : documents) {
        const auto value = json.parse(text);
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(json.serialise(*value), expected);
    }
    const Value notUtf8{Value::Dictionary{{"\xFF", {std::string("a\x80z")}}}};
    EXPECT_EQ(json.serialise(notUtf8), "{\"\xEF\xBF\xBD\":\"a\xEF\xBF\xBDz\"}");
}

TEST(NlohmannJson, WhatIsNoDocumentGivesNothing) {
    for (const std::string& text :
         {""s, " "s, "1"s, "\"text\""s, "null"s, // scalars are values, but no documents
          "[1,]"s, "{\"a\"}"s, "[] x"s, "[]\0x"s, "[1e999]"s, "[\"\xFF\"]"s, "[\"\\ud800\"]"s, // not UTF-8
          nested(513), nested(100'000), std::string(100'000, '[')})
        EXPECT_FALSE(NlohmannJson().parse(text)) << text.substr(0, 40);
}

} // namespace
