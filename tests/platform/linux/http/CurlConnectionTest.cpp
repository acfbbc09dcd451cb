#include "platform/linux/files/LinuxFileManager.h"
#include "support/HttpWorld.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace {

using namespace std::string_literals;
using namespace join::platform;
using namespace join::test;

TEST(CurlConnection, SendsTheHeadersAndTheBodyAsTheyAreAndNothingElse) {
    HttpWorld world;
    std::string bytes(2'000'000, '\0');
    std::ranges::generate(bytes, std::minstd_rand());
    const std::string path = writeFile(world.folder / "file", bytes);
    world.report.file = LinuxFileManager(SystemRoot(world.folder / "root")).open(path);
    world.report.bodyBehindFile = "end";
    writeFile(path + ".new", "replaced");
    std::filesystem::rename(path + ".new", path); // by another upload
    world.server.expect("/", {.body = "thanks"}, "POST");
    world.report.headers = {
        {"Content-Type", "a/b"}, {"Content-Length", "2000009"}, {"X-Empty", ""}, {"X-A", "a\r\nX-B: b"}};
    world.expectUpload({"response", "thanks", "finish"});
    const std::string head =
        "POST / HTTP/1.1\r\nHost: " + world.server.url("").substr(8) + // behind https://
        "\r\nContent-Type: a/b\r\nContent-Length: 2000009\r\nX-Empty:\r\nX-A: aX-B: b\r\n\r\n";
    const std::string request = world.server.takeRequests().at(0);
    EXPECT_TRUE(request == head + "report" + bytes + "end") << request.substr(0, 2 * head.size());
}

TEST(CurlConnection, ReadsAFileInSmallPiecesAndFailsWhenItHasBecomeShorter) {
    struct ShorteningFile final : ReadableFile {
        std::uint64_t size() const override { return std::uint64_t{1} << 40; }
        std::size_t read(std::uint64_t offset, std::span<char> buffer) const override {
            EXPECT_LE(buffer.size(), std::size_t{1} << 20);
            std::ranges::fill(buffer, 'x');
            return offset < 10'000'000 ? buffer.size() : 0;
        }
    };
    HttpWorld world;
    world.report.file = std::make_shared<ShorteningFile>();
    world.expectUpload({"fail"}, "shorter");
}

TEST(CurlConnection, TellsWhatArrivesWhateverTheStatusAndItsEndOnce) {
    HttpWorld world;
    world.report.body = ""; // for half a minute its bytes would count as progress
    const std::string longest(65536, 'x');
    const std::string zipped = "\37\213\10\0\0\0\0\0\2\3\13\16uvv\15\16\6\0\250!EP\7\0\0\0"s; // "SUCCESS"
    const char* final =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nwhole\r\n0\r\nX: 1\r\n\r\n";
    const std::tuple<ScriptedAnswer, News, std::string> cases[] = {
        {{200, longest}, {"response", longest, "finish"}, ""},
        {{204}, {"response", "finish"}, ""},
        {{307, "there", {"Location: /there"}}, {"response", "there", "finish"}, ""},
        {{103, final, {}, Fault::end}, {"response", "whole", "finish"}, ""},
        {{103, "", {}, Fault::end}, {"fail"}, "No whole answer"},
        {{413, longest + "x"}, {"response", longest, "finish"}, ""}, // is cut
        {{200, zipped, {"Content-Encoding: gzip"}}, {"response", "SUCCESS", "finish"}, ""},
        {{200, "half ", {"Content-Length: 10"}, Fault::cut}, {"response", "half ", "fail"}, "No whole"},
        {{103, "", {}, Fault::stall}, {"fail"}, "slow"},
        {{200, "1;" + longest, {"Transfer-Encoding: chunked"}, Fault::endless},
         {"response", "fail"},
         "sent more than"},
        {{103, "", {}, Fault::cut}, {"fail"}, "No whole answer"},
    };
    for (const auto& [answer, news, error] : cases) {
        world.server.expect("/", answer, "POST");
        world.report.stallTimeout = std::chrono::seconds(answer.fault == Fault::stall ? 1 : 60);
        world.expectUpload(news, error);
    }
}

TEST(CurlConnection, DestroyingItEndsItAndNothingMoreIsTold) {
    for (const Fault fault : {Fault::none, Fault::stall}) {
        HttpWorld world;
        world.server.expect("/", {200, "whole", {}, fault}, "POST");
        std::unique_ptr<Connection> connection = world.client->connect(world.report, world.delegate);
        world.delegate.atResponse = [&] { connection.reset(); };
        EXPECT_TRUE(eventually([&] { return world.queue.turn(), !connection; }));
        world.queue.turn();
        EXPECT_EQ(world.delegate.news, News{"response"});
    }
}

} // namespace
