#include "platform/linux/documents/NlohmannJson.h"

#include <gtest/gtest.h>

namespace {

using join::platform::NlohmannJson;
using join::platform::Value;

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(NlohmannJson, DocumentsComeBackCompactInTheirOrder) {
    const std::pair<std::string, std::string> documents[] = {
        {" { \"b\" : 1 , \"a\" : [ ] , \"b\" : { } } ", R"({"b":1,"a":[],"b":{}})"},
        {"\xEF\xBB\xBF[]", "[]"},
        {R"([null,true,false,-1,2.5,"\u00e9\n\"/"])", "[null,true,false,-1,2.5,\"\xC3\xA9\\n\\\"/\"]"},
        {"[9223372036854775807,-9223372036854775808]", "[9223372036854775807,-9223372036854775808]"},
        {"[18446744073709551615,1e2]", "[1.8446744073709552e+19,100.0]"},
        {"[100000000000000000000]", "[1e+20]"},
        {R"({"":{"x":[[1],[2,{}]]}})", R"({"":{"x":[[1],[2,{}]]}})"},
        {nested(512), nested(512)},
    };
    NlohmannJson json;
    for (const auto& [text, expected] : documents) {
        const auto value = json.parse(text);
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(json.serialise(*value), expected);
    }
}

TEST(NlohmannJson, WhatIsNoDocumentGivesNothing) {
    using namespace std::string_literals;
    const std::vector<std::string> texts[] = {
        {"", " ", "1", "\"text\"", "null"}, // scalars are values, but no documents
        {"[", "]", "[1,]", "{\"a\"}", "{a:1}", "[] x", "[]\0x"s, "[]\0"s, "['a']", "[NaN]", "[1e999]",
         "[\"a\nb\"]"},
        {"[\"\xFF\"]", "[\"\xC0\x80\"]", "{\"\xED\xA0\x80\":1}", "[\"\\ud800\"]"}, // not UTF-8
        {nested(513), nested(100'000), std::string(100'000, '[')}};
    for (const auto& kind : texts)
        for (const std::string& text : kind)
            EXPECT_FALSE(NlohmannJson().parse(text)) << text.substr(0, 40);
}

TEST(NlohmannJson, BytesThatAreNotUtf8AreWrittenAsReplacements) {
    const Value value{Value::Dictionary{{"\xFF", {std::string("a\x80z")}}}};
    EXPECT_EQ(NlohmannJson().serialise(value), "{\"\xEF\xBF\xBD\":\"a\xEF\xBF\xBDz\"}");
}

} // namespace
