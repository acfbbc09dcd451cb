#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using join::test::Child;
using join::test::contentsOf;
using join::test::eventually;
using join::test::TemporaryFolder;

TEST(ServiceProgram, IsTrustedByItsCertificateAndEndsCleanlyOnSigterm) {
    const TemporaryFolder folder;
    Child service({.command = {JOIN_SERVICE_PROGRAM, "--port-file", folder / "port", "--certificate",
                               folder / "certificate.pem", "--log", folder / "log", "--valid-key", "7"},
                   .output = folder / "output"});
    ASSERT_TRUE(eventually([&] { return contentsOf(folder / "port").ends_with('\n'); }));
    const std::string port = contentsOf(folder / "port");
    const std::string url = "https://localhost:" + port.substr(0, port.size() - 1) +
                            "/api/public/xml/meetings/checkSessionID?key=7&role=agent&sessionType=Fendel";
    const auto ask = [&](const std::string& authority) {
        return Child({.command = {"curl", "--silent", "--noproxy", "*", "--cacert", authority, url},
                      .output = folder / "answer"})
            .wait();
    };
    EXPECT_EQ(ask(folder / "certificate.pem"), 0);
    EXPECT_NE(contentsOf(folder / "answer").find("<is-valid>true</is-valid>"), std::string::npos);
    EXPECT_NE(ask("/dev/null"), 0);

    EXPECT_TRUE(eventually([&] { return contentsOf(folder / "log").ends_with('\n'); }));
    EXPECT_TRUE(contentsOf(folder / "output").ends_with(contentsOf(folder / "log")));
    service.end();
    EXPECT_EQ(service.wait(), 0);
}

TEST(ServiceProgram, RefusesAWrongOptionWithOneLineAndStatusTwo) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        Child({.command = {JOIN_SERVICE_PROGRAM, "--colour", "red"}, .output = folder / "output"}).wait(), 2);
    const std::string output = contentsOf(folder / "output");
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
    EXPECT_EQ(Child({.command = {JOIN_SERVICE_PROGRAM, "--help"}}).wait(), 0);
    EXPECT_EQ(Child({.command = {JOIN_SERVICE_PROGRAM, "--answer", folder / "missing"}}).wait(), 1);
}

} // namespace
