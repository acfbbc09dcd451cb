#include "support/HttpWorld.h"
#include "support/OrdinaryUser.h"
#include "support/RefusedSystemCall.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <random>
#include <semaphore>

namespace {

std::atomic<bool> isLookingUp = false;
std::binary_semaphore answerLookup(0);

} // namespace

/// Replaces the C library's: the lookup of one host lasts until the test lets it end.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): those of the system are reserved
extern "C" [[gnu::visibility("default")]] int getaddrinfo(const char* host, const char* service,
                                                          const addrinfo* hints, addrinfo** found) {
    if (host && host == std::string_view("slow.example")) {
        isLookingUp = true;
        answerLookup.try_acquire_for(std::chrono::seconds(10));
        isLookingUp = false;
        return EAI_AGAIN;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(host, service, hints, found);
}

namespace {

using namespace std::chrono_literals;
using namespace join::platform;
using namespace join::test;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

News namesIn(const std::string& folder) {
    News names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

/// With a download into a folder of its own.
struct World : HttpWorld {
    TemporaryFolder folder;
    DownloadRequest request{.url = server.url("/"),
                            .userAgent = "Debian 12",
                            .destination = folder / "Image.dmg",
                            .stallTimeout = 60s};

    void expectNews(const News& news, const std::string& error = "") {
        expectNewsOf([&] { return client.download(request, delegate); }, request.url, news, error);
    }
    void expectFile() { expectNews({"begin", "finish"}); }
    void expectFailure(const std::string& error) { expectNews({"begin", "fail"}, error); }
};

/// Makes checks in a child process, so that they may change anything of their process. No other thread may
/// run. Returns how many kilobytes of memory the child had at its peak.
long expectInChild(const std::function<void()>& checks) {
    const pid_t process = ::fork();
    if (process == 0) {
        checks();
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    rusage usage{};
    ::wait4(process, &status, 0, &usage);
    EXPECT_EQ(status, 0);
    return usage.ru_maxrss;
}

bool knowsNamelessFiles(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_TMPFILE | O_WRONLY, 0600);
    return file >= 0 && ::close(file) == 0;
}

TEST(CurlDownload, PutsTheWholeBodyInPlaceOfAnOlderFileThroughARedirect) {
    World world;
    std::string body(20 * mebibyte, '\0');
    std::ranges::generate(body, std::minstd_rand());
    world.server.expect("/", {.status = 302, .body = "ignored", .headers = {"Location: /image"}});
    world.server.expect("/image", {.body = body});
    writeFile(world.request.destination, "old");
    world.request.userAgent = "Debian\r\nX-Injected: 1";

    world.expectFile();
    EXPECT_TRUE(contentsOf(world.request.destination) == body);
    EXPECT_EQ(world.delegate.lastAnnounced, body.size());
    EXPECT_EQ(namesIn(world.folder.path()), News{"Image.dmg"});
    struct stat status {};
    EXPECT_EQ(::stat(world.request.destination.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    for (const std::string& head : world.server.requests())
        EXPECT_NE(head.find("\r\nUser-Agent: DebianX-Injected: 1\r\n"), std::string::npos) << head;
}

TEST(CurlDownload, AnAnswerThatIsNotAWholeBodyFailsOnceAndLeavesTheOldFile) {
    World world;
    const struct {
        ScriptedAnswer answer;
        std::string description;
        std::chrono::milliseconds stallTimeout = 60s;
        std::chrono::milliseconds timeout = 60s;
    } cases[] = {
        {{.status = 404, .body = "no such thing"}, "status 404"},
        {{.status = 500}, "status 500"},
        {{.status = 204}, "no file"},
        {{.status = 304}, "status 304"},
        {{.status = 300, .body = "choose"}, "status 300"},
        {{.status = 301, .headers = {"Location: http://localhost/"}}, "leaves HTTPS"},
        {{.body = std::string(mebibyte, 'x'), .fault = Fault::cutBody}, "No whole answer"},
        {{.body = std::string(mebibyte, 'x'), .fault = Fault::cutUnannounced}, "No whole answer"},
        {{.fault = Fault::reset}, "No whole answer"},
        {{.fault = Fault::silence}, "slow", 1s},
        {{.body = "half of this", .fault = Fault::stallBody}, "slow", 1s},
        {{.body = "x", .fault = Fault::endless}, "timed out", 60s, 300ms},
        {{.body = "x", .headers = {"Content-Length: 9000000000"}, .fault = Fault::endless}, "longer than"},
    };
    writeFile(world.request.destination, "old");
    for (const auto& [answer, description, stallTimeout, timeout] : cases) {
        world.server.expect("/", answer);
        world.request.stallTimeout = stallTimeout;
        world.request.timeout = timeout;
        world.expectFailure(description);
        EXPECT_TRUE(contentsOf(world.request.destination) == "old") << description;
        EXPECT_EQ(namesIn(world.folder.path()), News{"Image.dmg"}) << description;
    }
}

TEST(CurlDownload, ABodyIsWholeWhenItSaysItsEndAndIsNeverDecoded) {
    World world;
    const std::string chunked = "5\r\nwhole\r\n0\r\n\r\n";
    const ScriptedAnswer answers[] = {{.body = "whole", .fault = Fault::endUnannounced},
                                      {.body = "whole", .headers = {"Content-Encoding: gzip"}}, // as it is
                                      {.body = chunked + chunked, // of which half is sent
                                       .headers = {"Transfer-Encoding: chunked"},
                                       .fault = Fault::cutUnannounced}};
    for (const ScriptedAnswer& answer : answers) {
        world.server.expect("/", answer);
        world.expectFile();
        EXPECT_EQ(contentsOf(world.request.destination), "whole");
    }
}

/// What is kept: a file of ten bytes breaks off after five.
struct BrokenOff : World {
    void breakOff(std::vector<std::string> headers = {"ETag: \"1\"", "Accept-Ranges: bytes"}) {
        server.expect("/", {200, "0123456789", std::move(headers), Fault::cutBody});
        expectFailure("No whole answer");
    }
    /// Whether the latest request but so many asked for the rest.
    bool hasAskedForRest(std::size_t before = 0, const std::string& validator = "\"1\"") const {
        return server.requests()
                   .at(server.requests().size() - 1 - before)
                   .find("\r\nRange: bytes=5-\r\nIf-Range: " + validator + "\r\n") != std::string::npos;
    }
    void expectContents(const News& news, const std::string& contents) {
        expectNews(news);
        EXPECT_EQ(contentsOf(request.destination), contents);
        EXPECT_EQ(namesIn(certificates / "cache/tavojoin/downloads"), News{});
    }
};

TEST(CurlDownload, GoesOnWhereItBrokeOffUntilItIsWhole) {
    for (const auto& [headers, validator] :
         {std::pair{News{"ETag: \"1\""}, "\"1\""},
          {News{"ETag: W/\"1\"", "Last-Modified: Sun, 01 Nov 2026 10:00:00 GMT",
                "Date: Sun, 01 Nov 2026 10:01:00 GMT"},
           "Sun, 01 Nov 2026 10:00:00 GMT"}}) {
        BrokenOff world;
        const auto with = [&](const std::string& header) {
            News all = headers;
            all.push_back(header);
            return all;
        };
        world.breakOff(with("Accept-Ranges: bytes"));
        world.server.expect("/", {206, "56789", with("Content-Range: bytes 5-9/10"), Fault::cutBody});
        world.expectNews({"begin", "5", "fail"}, "No whole answer");
        EXPECT_TRUE(world.hasAskedForRest(0, validator));
        EXPECT_EQ(namesIn(world.folder.path()), News{});
        world.server.expect("/", {206, "789", with("Content-Range: bytes 7-9/10")});
        world.expectContents({"begin", "7", "finish"}, "0123456789");
    }
}

TEST(CurlDownload, BeginsAfreshUnlessTheServerSendsExactlyTheRestOfTheSameFile) {
    BrokenOff world;
    const std::string tag = "ETag: \"1\"";
    const std::string range = "Content-Range: bytes 5-9/10";
    const ScriptedAnswer answers[] = {{206, "45678", {tag, "Content-Range: bytes 4-8/10"}},
                                      {206, "5678", {tag, "Content-Range: bytes 5-8/10"}},
                                      {206, "56789", {tag, "Content-Range: bytes 5-9/11"}},
                                      {206, "56789x", {tag, range}},
                                      {206, "5678", {tag, range}},
                                      {206, "56789", {tag, range}, Fault::endUnannounced},
                                      {206, "56789", {"ETag: \"2\"", range}},
                                      {206, "56789", {"ETag: W/\"1\"", range}},
                                      {206, "56789", {range}},
                                      {206, "56789", {tag, "Content-Type: multipart/byteranges; boundary=x"}},
                                      {206, "", {tag, range}},
                                      {416, "", {"Content-Range: bytes */5"}},
                                      {204},
                                      {503, "busy"}};
    for (const ScriptedAnswer& answer : answers) {
        world.breakOff();
        world.server.expect("/", answer);
        world.server.expect("/", {.body = "afresh"});
        world.expectContents({"begin", "finish"}, "afresh");
        EXPECT_TRUE(world.hasAskedForRest(1));
        EXPECT_FALSE(world.hasAskedForRest());
    }
    world.breakOff();
    world.server.expect("/", {200, "changed", {"ETag: \"2\""}});
    world.expectContents({"begin", "finish"}, "changed");
    EXPECT_TRUE(world.hasAskedForRest());
}

TEST(CurlDownload, KeepsOnlyWhatHasAVersionAndIsOfThisDayAndThisUrl) {
    BrokenOff world;
    const std::string ranges = "Accept-Ranges: bytes";
    const std::string kept = world.certificates / "cache/tavojoin/downloads/";
    const auto age = [&](int hours) {
        for (const char* name : {"Image.dmg.part", "Image.dmg.notes"})
            std::filesystem::last_write_time(kept + name, std::filesystem::file_time_type::clock::now() -
                                                              std::chrono::hours(hours));
    };
    const std::pair<News, std::function<void()>> cases[] = {
        {{ranges}, [] {}},
        {{"ETag: \"1\""}, [] {}},
        {{"ETag: W/\"1\"", ranges}, [] {}},
        {{"Last-Modified: Sun, 01 Nov 2026 10:00:00 GMT", "Date: Sun, 01 Nov 2026 10:00:01 GMT", ranges},
         [] {}},
        {{"ETag: \"1\"", ranges}, [&] { age(25); }},
        {{"ETag: \"1\"", ranges}, [&] { writeFile(kept + "Image.dmg.part", "0123456789"); }},
        {{"ETag: \"1\"", ranges}, [&] { writeFile(kept + "Image.dmg.notes", "nonsense"); }},
        {{"ETag: \"1\"", ranges}, [&] { std::filesystem::remove(kept + "Image.dmg.notes"); }},
        {{"ETag: \"1\"", ranges}, [&] { world.request.url = world.server.url("/other"); }},
    };
    for (const auto& [headers, happens] : cases) {
        world.request.url = world.server.url("/");
        world.breakOff(headers);
        happens();
        world.server.expect(world.request.url.ends_with("other") ? "/other" : "/", {.body = "afresh"});
        world.expectContents({"begin", "finish"}, "afresh");
        EXPECT_FALSE(world.hasAskedForRest());
    }
    world.request.url = world.server.url("/");
    world.breakOff();
    age(23);
    world.server.expect("/", {206, "56789", {"ETag: \"1\"", "Content-Range: bytes 5-9/10"}});
    world.expectContents({"begin", "5", "finish"}, "0123456789");
}

TEST(CurlDownload, TheSystemsAuthoritiesAreTrustedInTheirFolderAndInTheirBundleBesidesTheUsers) {
    expectInChild([] {
        World world;
        const std::string others =
            writeFile(world.folder / "others.pem", join::tools::Certificate("others").pem());
        const EnvironmentVariable file("SSL_CERT_FILE", others.c_str());
        world.expectFailure("certificate");
        for (const std::string name : {"756b76dc.0", "ca-certificates.crt"}) { // the hash of "CN = test"
            const std::string system = world.certificates / "with " + name;
            writeFile(system + "/" + name, world.server.certificate());
            if (::unshare(CLONE_FS | CLONE_NEWNS) != 0 ||
                ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount(system.c_str(), "/etc/ssl/certs", nullptr, MS_BIND, nullptr) != 0)
                return; // only root may, where there is such a folder
            world.server.expect("/", {.body = "whole"});
            world.expectFile();
        }
    });
}

TEST(CurlDownload, WhatCannotBeginOnlyFailsAndAsksNobody) {
    World world;
    writeFile(world.folder / "closed/Image.dmg", "old");
    ASSERT_EQ(::chmod((world.folder / "closed").c_str(), 0555), 0);
    ASSERT_EQ(::chmod(world.folder.path().c_str(), 0755), 0);
    const OrdinaryUser user;
    for (const auto& [destination, description] : {std::pair{"missing/Image.dmg", "No such file"},
                                                   {"closed/Image.dmg", "denied"},
                                                   {"closed", "directory"}}) {
        world.request.destination = world.folder / destination;
        world.expectNews({"fail"}, description);
    }
    EXPECT_EQ(world.server.connectionCount(), 0U);
    EXPECT_EQ(namesIn(world.folder / "closed"), News{"Image.dmg"});
}

TEST(CurlDownload, DestroyingItLeavesNothing) {
    World world;
    world.server.expect("/", {.body = "half of this", .fault = Fault::stallBody});
    auto download = world.client.download(world.request, world.delegate);
    EXPECT_TRUE(eventually([&] { return world.server.requests().size() == 1; }));
    if (knowsNamelessFiles(world.folder.path())) {
        EXPECT_EQ(namesIn(world.folder.path()), News{}); // so that a killed process leaves nothing either
    }
    download.reset();
    EXPECT_EQ(namesIn(world.folder.path()), News{});
}

TEST(CurlDownload, DestroyingItDoesNotWaitForANameLookup) {
    World world;
    world.request.url = "https://slow.example/";
    auto download = world.client.download(world.request, world.delegate);
    EXPECT_TRUE(eventually([] { return isLookingUp.load(); }));
    download.reset();
    EXPECT_TRUE(isLookingUp);
    answerLookup.release();
    EXPECT_TRUE(eventually([] { return !isLookingUp; }));
}

TEST(CurlDownload, WorksWhereFilesNeedNames) {
    expectInChild([] {
        World world;
        refuseSystemCall(SYS_openat, EOPNOTSUPP, O_TMPFILE & ~O_DIRECTORY);
        ASSERT_FALSE(knowsNamelessFiles("/tmp"));
        world.server.expect("/", {.body = "new"});
        world.expectFile();
        world.server.expect("/", {.body = "newer", .fault = Fault::cutBody});
        world.expectFailure("No whole answer");
        EXPECT_EQ(contentsOf(world.request.destination), "new");
        EXPECT_EQ(namesIn(world.folder.path()), News{"Image.dmg"});
    });
}

TEST(CurlDownload, AFullDiskFailsItOnceAndLeavesNothing) {
    expectInChild([] {
        World world;
        constexpr rlimit oneMebibyte{mebibyte, mebibyte};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &oneMebibyte);
        world.server.expect("/", {.body = std::string(mebibyte, 'x'), .repeat = 2});
        world.expectFailure("too large");
        EXPECT_EQ(namesIn(world.folder.path()), News{});
    });
}

TEST(CurlDownload, ItsMemoryDoesNotGrowWithTheBody) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer keeps freed memory";
#endif
    const auto peakFor = [](std::size_t mebibytes) {
        return expectInChild([mebibytes] {
            World world;
            world.server.expect("/", {.body = std::string(mebibyte, 'x'), .repeat = mebibytes});
            world.expectFile();
            EXPECT_EQ(std::filesystem::file_size(world.request.destination), mebibytes * mebibyte);
        });
    };
    EXPECT_LT(peakFor(300), peakFor(3) + 4096);
}

} // namespace
