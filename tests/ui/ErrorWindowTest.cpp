#include "ui/ErrorWindow.h"

#include "support/LogicTest.h"

namespace join::test {

TEST(ErrorMessage, LinksTheFirstOccurrenceOfTheLinkText) {
    const struct {
        std::string localized, linkText, shown;
        std::optional<std::size_t> offset; ///< of the link
    } cases[] = {
        {"Go here or here.", "here", "Go here or here.", 3},
        {"here", "here", "here", 0},
        {"Schön: hier", "hier", "Schön: hier", 8},
        {"100%% sure, 5% here", "here", "100% sure, 5% here", 14},
        {"%%%% here %", "here", "%% here %", 3},
        {"Go there.", "Here", "Go there.", {}},
        {"Go here.", "", "Go here.", {}},
        {"", "here", "", {}},
    };
    for (const auto& [localized, linkText, shown, offset] : cases) {
        const platform::MessageText message = errorMessage(localized, linkText);
        EXPECT_EQ(message.text, shown);
        ASSERT_EQ(message.link.has_value(), offset.has_value()) << localized;
        if (!offset)
            continue;
        EXPECT_EQ(message.link->offset, *offset) << localized;
        EXPECT_EQ(message.link->length, linkText.size());
        EXPECT_TRUE(message.link->address.starts_with("https://")) << message.link->address;
    }
}

class ErrorWindowTest : public LogicTest {};

TEST_F(ErrorWindowTest, OkAndItsCloseButtonEndTheProcessAtOnce) {
    strings.texts["ERROR_MESSAGE"] = "See [CLICK_HERE]";
    ErrorWindow window;
    window.showWindow();
    FakeWindow& loaded = *windows.loaded.at("ErrorWindow");
    EXPECT_EQ(loaded.control("errorText").message.text, "See [CLICK_HERE]");
    EXPECT_TRUE(loaded.control("errorText").message.link);
    journal.clear();
    EXPECT_THROW(loaded.control("ok").click(), Terminated);
    EXPECT_THROW(loaded.close(), Terminated);
    EXPECT_EQ(journal, (Journal{"exit", "exit"}));
}

} // namespace join::test
