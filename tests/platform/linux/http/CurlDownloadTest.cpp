#include "support/HttpWorld.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <random>
#include <semaphore>

namespace {

std::atomic<int> lookups = 0; ///< under way
std::counting_semaphore answerLookup(0);

} // namespace

/// Replaces the C library's: the lookup of one host lasts until the test lets it end.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): those of the system are reserved
extern "C" [[gnu::visibility("default")]] int getaddrinfo(const char* host, const char* service,
                                                          const addrinfo* hints, addrinfo** found) {
    if (host && host == std::string_view("slow.example")) {
        ++lookups;
        answerLookup.try_acquire_for(std::chrono::seconds(40));
        --lookups;
        return EAI_AGAIN;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(host, service, hints, found);
}

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using namespace join::platform;
using namespace join::test;

/// Returns the largest size of this process, in kilobytes; 0 with a sanitizer, which keeps freed memory.
long peakMemory() {
    rusage usage{};
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    ::getrusage(RUSAGE_SELF, &usage);
#endif
    return usage.ru_maxrss;
}

const std::string tag = "ETag: \"1\"";
const std::string ranges = "Accept-Ranges: bytes";
const std::string rest = "Range: bytes=5-\r\nIf-Range: \"1\"\r\n\r\n";

struct World : HttpWorld {
    const std::string kept = certificates / "cache/tavojoin/downloads/Image.dmg";

    void expectFile() { expectDownload({"begin", "finish"}); }
    void expectFailure(const std::string& error) { expectDownload({"begin", "fail"}, error); }

    /// A file of ten bytes breaks off after five.
    void breakOff(News headers) {
        headers.emplace_back("Content-Length: 10");
        server.expect("/", {200, "01234", std::move(headers), Fault::cut});
        expectFailure("No whole answer");
        EXPECT_EQ(asked(), News{""});
        EXPECT_TRUE(fs::is_empty(folder.path()));
    }
    /// For each request since the last call: which range it asked for, and on which condition.
    News asked() {
        News all = server.takeRequests();
        for (std::string& head : all)
            head.erase(0, head.find("Range: "));
        return all;
    }
    void ageKept(int hours) const {
        for (const char* file : {".part", ".notes"})
            fs::last_write_time(kept + file, fs::file_time_type::clock::now() - std::chrono::hours(hours));
    }
    void expectContents(const News& news, const std::string& contents, const News& requests) {
        expectDownload(news);
        EXPECT_EQ(contentsOf(image.destination), contents);
        EXPECT_TRUE(fs::is_empty(certificates / "cache/tavojoin/downloads"));
        EXPECT_EQ(asked(), requests);
        fs::remove(image.destination);
    }
};

/// Gives this thread, and those that it starts, file systems of their own. Only root may.
bool hasOwnMounts() {
    return ::unshare(CLONE_FS | CLONE_NEWNS) == 0 &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

TEST(CurlDownload, PutsTheWholeBodyInPlaceOfAnOlderFileThroughARedirectWithoutHoldingItInMemory) {
    World world;
    constexpr std::size_t blocks = 100;
    std::string block(std::size_t{1} << 20, '\0');
    std::ranges::generate(block, std::minstd_rand());
    const std::string length = "Content-Length: " + std::to_string(blocks * block.size());
    world.server.expect("/", {302, "ignored", {"Location: /image"}});
    world.server.expect("/image", {200, block, {length}, Fault::endless});
    writeFile(world.image.destination, "old");
    world.image.userAgent = "Debian\r\nX-Injected: 1";
    const long peakBefore = peakMemory();

    world.expectFile();
    EXPECT_LT(peakMemory(), peakBefore + 20'000);
    EXPECT_EQ(world.delegate.lastAnnounced, blocks * block.size());
    EXPECT_EQ(fs::file_size(world.image.destination), blocks * block.size());
    std::ifstream file(world.image.destination);
    for (std::string read(block.size(), '\0'); file.read(read.data(), static_cast<long>(read.size()));)
        ASSERT_TRUE(read == block);
    EXPECT_EQ(countIn(world.folder.path()), 1);
    EXPECT_EQ(fs::status(world.image.destination).permissions(), fs::perms{0600});
    for (const std::string& head : world.server.takeRequests())
        EXPECT_NE(head.find("\r\nUser-Agent: DebianX-Injected: 1\r\n"), std::string::npos) << head;
}

TEST(CurlDownload, TakesAWholeBodyAsItIsAndLeavesTheOldFileForAnythingElse) {
    World world;
    const std::string chunked = "5\r\nwhole\r\n0\r\n\r\n";
    const std::pair<ScriptedAnswer, std::string> cases[] = {
        {{204}, "no file"},
        {{304}, "status 304"},
        {{300, "choose"}, "status 300"},
        {{200, "half", {}, Fault::cut}, "No whole answer"},
        {{200, "half", {"Content-Length: 9000000000"}, Fault::stall}, "longer than"},
        {{200, "half", {"Content-Length: 8"}, Fault::stall}, "timed out"},
        {{103, "", {}, Fault::stall}, "slow"},
        {{200, "whole", {}, Fault::end}, ""},
        {{200, "whole", {"Content-Encoding: gzip"}}, ""},
        {{200, chunked, {"Transfer-Encoding: chunked"}, Fault::cut}, ""},
    };
    for (const auto& [answer, error] : cases) {
        writeFile(world.image.destination, "old");
        world.server.expect("/", answer);
        world.image.timeout = error == "timed out" ? 300ms : 60s;
        world.image.stallTimeout = error == "slow" ? 1s : 60s;
        world.expectDownload({"begin", error.empty() ? "finish" : "fail"}, error);
        EXPECT_EQ(contentsOf(world.image.destination), error.empty() ? "whole" : "old") << error;
        EXPECT_EQ(countIn(world.folder.path()), 1) << error;
    }
}

TEST(CurlDownload, GoesOnWhereItBrokeOffUntilItIsWhole) {
    World world;
    const std::string changed = "Sun, 01 Nov 2026 10:00:00 GMT";
    const std::string date = "Date: Sun, 01 Nov 2026 10:01:00 GMT";
    for (const auto& [version, validator] :
         {std::pair{tag, "\"1\""s}, {"ETag: W/\"1\"\r\nLast-Modified: " + changed, changed}}) {
        world.breakOff({version, date, ranges});
        world.ageKept(23);
        world.server.expect(
            "/", {206, "56", {version, "Content-Range: bytes 5-9/10", "Content-Length: 5"}, Fault::cut});
        world.expectDownload({"begin", "5", "fail"}, "No whole answer");
        world.server.expect("/", {206, "789", {version, "Content-Range: bytes 7-9/10"}});
        const std::string condition = "\r\nIf-Range: " + validator + "\r\n\r\n";
        world.expectContents({"begin", "7", "finish"}, "0123456789",
                             {"Range: bytes=5-" + condition, "Range: bytes=7-" + condition});
    }
}

TEST(CurlDownload, BeginsAfreshUnlessTheServerSendsExactlyTheRestOfTheSameFile) {
    World world;
    const std::string range = "Content-Range: bytes 5-9/10";
    const ScriptedAnswer answers[] = {{206, "45678", {tag, "Content-Range: bytes 4-8/10"}},
                                      {206, "56789", {tag, "Content-Range: bytes 5-9/11"}},
                                      {206, "56789x", {tag, range}},
                                      {206, "5678", {tag, range}},
                                      {206, "56789", {"ETag: \"2\"", range}},
                                      {206, "", {tag, range}},
                                      {416, "", {"Content-Range: bytes */5"}},
                                      {503, "busy"},
                                      {200, "afresh", {"ETag: \"2\""}}};
    for (const ScriptedAnswer& answer : answers) {
        world.breakOff({tag, ranges});
        world.server.expect("/", answer);
        if (answer.status != 200)
            world.server.expect("/", {.body = "afresh"});
        world.expectContents({"begin", "finish"}, "afresh",
                             answer.status == 200 ? News{rest} : News{rest, ""});
    }
}

TEST(CurlDownload, KeepsOnlyWhatHasAVersionAndIsOfThisDayAndThisUrl) {
    World world;
    const News both{tag, ranges};
    const std::pair<News, std::function<void()>> cases[] = {
        {{ranges}, {}},
        {{tag}, {}},
        {{"ETag: W/\"1\"", ranges}, {}},
        {{"ETag: \"", ranges}, {}},
        {{"Last-Modified: Sun, 01 Nov 2026 10:00:00 GMT", "Date: Sun, 01 Nov 2026 10:00:01 GMT", ranges}, {}},
        {both, [&] { world.ageKept(25); }},
        {both, [&] { writeFile(world.kept + ".part", "0123456789"); }},
        {both, [&] { writeFile(world.kept + ".notes", "nonsense"); }},
        {both, [&] { fs::remove(world.kept + ".notes"); }},
        {both, [&] { world.image.url = world.server.url("/", "127.0.0.1"); }},
    };
    for (const auto& [headers, happens] : cases) {
        world.breakOff(headers);
        if (happens)
            happens();
        world.server.expect("/", {.body = "afresh"});
        world.expectContents({"begin", "finish"}, "afresh", {""});
    }
}

TEST(CurlDownload, TheSystemsAuthoritiesAreTrustedInTheirFolderAndInTheirBundleBesidesTheUsers) {
    expectInChild([] {
        World world;
        const std::string hash = "756b76dc.0"; // of the certificate's name, "CN = test"
        writeFile(world.certificates / "own/" + hash, world.server.certificate());
        const EnvironmentVariable noFile("SSL_CERT_FILE", nullptr);
        world.expectFailure("certificate");
        const EnvironmentVariable folders("SSL_CERT_DIR", ("/none:" + (world.certificates / "own")).c_str());
        world.server.expect("/", {.body = "whole"});
        world.expectFile();
        const EnvironmentVariable noFolder("SSL_CERT_DIR", nullptr);
        const std::string others = join::tools::Certificate("others").pem();
        const EnvironmentVariable file("SSL_CERT_FILE",
                                       writeFile(world.certificates / "others", others).c_str());
        world.expectFailure("certificate");
        for (const std::string& name : {hash, "ca-certificates.crt"s}) {
            const std::string system = world.certificates / "with " + name;
            writeFile(system + "/" + name, world.server.certificate());
            if (!hasOwnMounts() || ::mount(system.c_str(), "/etc/ssl/certs", nullptr, MS_BIND, nullptr) != 0)
                return; // where there is no such folder
            world.server.expect("/", {.body = "whole"});
            world.expectFile();
        }
    });
}

TEST(CurlDownload, WhatCannotBeginOnlyFailsAndAsksNobody) {
    World world;
    for (const auto& [destination, description] :
         {std::pair{"missing/Image.dmg", "No such file"}, {"", "directory"}}) {
        world.image.destination = world.folder / destination;
        world.expectDownload({"fail"}, description);
    }
}

TEST(CurlDownload, ANameLookupIsNotAwaitedForLongNorByItsDestruction) {
    World world;
    world.image.url = "https://slow.example/";
    world.image.stallTimeout = 100ms;
    world.expectFailure("timed out");
    EXPECT_EQ(lookups, 1);
    world.image.stallTimeout = 60s;
    auto download = world.client->download(world.image, world.delegate);
    EXPECT_TRUE(eventually([] { return lookups == 2; }));
    download.reset();
    EXPECT_EQ(lookups, 2);
    answerLookup.release(2);
    EXPECT_TRUE(eventually([] { return lookups == 0; }));
}

TEST(CurlDownload, AFullDiskFailsItOnceAndLeavesNothing) {
    expectInChild([] {
        World world;
        constexpr rlimit nineBytes{9, 9};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &nineBytes);
        world.server.expect("/", {200, "0123456789", {tag, ranges}});
        world.expectFailure("The file cannot be written: File too large");
        EXPECT_TRUE(fs::is_empty(world.folder.path()));
        EXPECT_FALSE(fs::exists(world.kept + ".part"));
        if (!hasOwnMounts() || ::mount("none", world.folder.path().c_str(), "tmpfs", 0, "size=1m") != 0)
            return;
        world.server.expect("/", {200, "x", {"Content-Length: 1048577"}, Fault::stall});
        world.expectFailure("The file needs 1048577 bytes, but the disk has room for 1048576");
    });
}

} // namespace
