#include "base/Format.h"

#include <gtest/gtest.h>

namespace join::test {

TEST(Text, TrimsTabsAndSpaceSeparatorsButNoLineBreaks) {
    const std::string blanks = "\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
                               "\u200A\u202F\u205F\u3000";
    const std::pair<std::string, const char*> cases[] = {
        {blanks + "a b" + blanks, "a b"},
        {"\n a \r", "\n a \r"},
        {"\u200Ba\u2028", "\u200Ba\u2028"}, // a format character and the line separator
        {"\xA0", "\xA0"},                   // half a blank is not a blank
    };
    for (const auto& [text, trimmed] : cases)
        EXPECT_EQ(trimBlanks(text), trimmed);
}

TEST(Text, FormatsAbsentTextFlagsAndForeignConversions) {
    EXPECT_EQ(formatted("%s : %@ and %@", "who", Text(), Text("")), "who : (null) and ");
    EXPECT_EQ(formatted("%hhd%i %d %ld", true, false, -7, 1L << 40), "10 -7 1099511627776");
    EXPECT_EQ(formatted("%@|%@", "%@%s", "%n"), "%@%s|%n");
}

} // namespace join::test
