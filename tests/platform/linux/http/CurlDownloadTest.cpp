#include "platform/linux/http/CurlHttpClient.h"
#include "platform/linux/http/HttpModule.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/OrdinaryUser.h"
#include "support/ScriptedHttpsServer.h"
#include "support/TemporaryFolder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <netdb.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstddef>
#include <functional>
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
using News = std::vector<std::string>;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

class RecordingDelegate final : public DownloadDelegate {
public:
    void downloadDidBegin() override { news.emplace_back("begin"); }
    void downloadDidFinish() override { news.emplace_back("finish"); }
    void downloadDidFail(const HttpError& given) override {
        news.emplace_back("fail");
        error = given;
    }
    bool hasEnd() const { return !news.empty() && news.back() != "begin"; }

    News news;
    HttpError error;
};

News namesIn(const std::string& folder) {
    News names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

/// A client that trusts the server, and a folder for what it downloads.
struct World {
    TemporaryFolder certificates;
    ScriptedHttpsServer server;
    EnvironmentVariable trust{"SSL_CERT_FILE",
                              writeFile(certificates / "server.pem", server.certificate()).c_str()};
    TemporaryFolder folder;
    DownloadRequest request{.url = server.url("/"),
                            .userAgent = "Debian 12",
                            .destination = folder / "Image.dmg",
                            .stallTimeout = 60s};
    FakeMainQueue queue;
    RecordingDelegate delegate;
    CurlHttpClient client{queue};
    std::unique_ptr<Download> download;

    void start() { download = client.download(request, delegate); }

    /// Returns what the delegate is told until the download has ended, and shortly after.
    News run() {
        delegate = {};
        start();
        EXPECT_TRUE(eventually([this] {
            queue.turn();
            return delegate.hasEnd();
        }));
        download.reset();
        queue.turn();
        return delegate.news;
    }

    void expectFailure(const News& news, const std::string& partOfDescription) {
        EXPECT_EQ(run(), news);
        EXPECT_EQ(delegate.error.failingUrl, request.url);
        EXPECT_NE(delegate.error.description.find(partOfDescription), std::string::npos)
            << delegate.error.description;
    }

    /// Starts an answer that never ends, and waits until the server has been asked.
    void startEndlessly() {
        server.expect("/", {.body = "half of this", .fault = Fault::stallBody});
        start();
        EXPECT_TRUE(eventually([this] {
            queue.turn();
            return delegate.news == News{"begin"} && server.requests().size() == 1;
        }));
    }
};

struct ChildEnd {
    int status;         ///< as from wait(2); 0 if the child's checks have passed
    long peakKilobytes; ///< of memory
};

/// Runs the work in a child process, so that it may change anything of its process. No other thread may run.
ChildEnd inChild(const std::function<void()>& work) {
    const pid_t process = ::fork();
    if (process == 0) {
        work();
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    ChildEnd end{};
    rusage usage{};
    ::wait4(process, &end.status, 0, &usage);
    end.peakKilobytes = usage.ru_maxrss;
    return end;
}

bool knowsNamelessFiles(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_TMPFILE | O_WRONLY, 0600);
    return file >= 0 && ::close(file) == 0;
}

/// From now on no file system knows them.
void forbidNamelessFiles() {
    constexpr unsigned namelessFlag = O_TMPFILE & ~O_DIRECTORY;
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, namelessFlag, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
    ASSERT_FALSE(knowsNamelessFiles("/tmp"));
}

TEST(CurlDownload, PutsTheWholeBodyInPlaceOfAnOlderFileThroughARedirect) {
    World world;
    std::string body(20 * mebibyte, '\0');
    std::ranges::generate(body, std::minstd_rand());
    world.server.expect("/", {.status = 302, .body = "ignored", .headers = {"Location: /image"}});
    world.server.expect("/image", {.body = body});
    writeFile(world.request.destination, "old");
    world.request.userAgent = "Debian\r\nX-Injected: 1";

    EXPECT_EQ(world.run(), (News{"begin", "finish"}));
    EXPECT_TRUE(contentsOf(world.request.destination) == body);
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
        {{.body = "x", .headers = {"Content-Length: 9000000000"}, .fault = Fault::endless}, "longer than"},
    };
    writeFile(world.request.destination, "old");
    for (const auto& [answer, description, stallTimeout] : cases) {
        world.server.expect("/", answer);
        world.request.stallTimeout = stallTimeout;
        world.expectFailure({"begin", "fail"}, description);
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
        EXPECT_EQ(world.run(), (News{"begin", "finish"})) << world.delegate.error.description;
        EXPECT_EQ(contentsOf(world.request.destination), "whole");
    }
}

TEST(CurlDownload, AServerThatCannotBeReachedOrTrustedFailsItOnceAndLeavesNothing) {
    World world;
    const ScriptedHttpsServer stranger;
    for (const auto& [url, description] :
         {std::pair{stranger.url("/"), "certificate"}, {"https://localhost:1/", "connect"}}) {
        world.request.url = url;
        world.expectFailure({"begin", "fail"}, description);
        EXPECT_EQ(namesIn(world.folder.path()), News{});
    }
}

TEST(CurlDownload, AnAuthorityThatIsOnlyInTheSystemsBundleIsTrusted) {
    const ChildEnd end = inChild([] {
        World world;
        const EnvironmentVariable unset("SSL_CERT_FILE", nullptr);
        world.expectFailure({"begin", "fail"}, "certificate");
        if (::unshare(CLONE_FS | CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount((world.certificates / "server.pem").c_str(), "/etc/ssl/certs/ca-certificates.crt",
                    nullptr, MS_BIND, nullptr) != 0)
            return; // only root may, where there is a bundle
        world.server.expect("/", {.body = "whole"});
        EXPECT_EQ(world.run(), (News{"begin", "finish"})) << world.delegate.error.description;
    });
    EXPECT_EQ(end.status, 0);
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
        world.expectFailure({"fail"}, description);
    }
    world.request.url = "http" + world.server.url("/").substr(5);
    world.expectFailure({"fail"}, "the URL");
    EXPECT_EQ(world.server.connectionCount(), 0U);
    EXPECT_EQ(namesIn(world.folder / "closed"), News{"Image.dmg"});
}

TEST(CurlDownload, DestroyingItEndsItAndNothingIsToldOrLeft) {
    World world;
    world.startEndlessly();
    if (knowsNamelessFiles(world.folder.path())) {
        EXPECT_EQ(namesIn(world.folder.path()), News{}); // so that a killed process leaves nothing either
    }
    world.download.reset();
    EXPECT_EQ(namesIn(world.folder.path()), News{});

    world.server.expect("/", {.body = "whole"});
    world.start();
    EXPECT_TRUE(eventually([&] { return contentsOf(world.request.destination) == "whole"; }));
    world.download.reset();
    world.queue.turn();
    EXPECT_EQ(world.delegate.news, News{"begin"}); // that of the first
}

TEST(CurlDownload, DestroyingItDoesNotWaitForANameLookup) {
    World world;
    world.request.url = "https://slow.example/";
    world.start();
    EXPECT_TRUE(eventually([] { return isLookingUp.load(); }));
    world.download.reset();
    EXPECT_TRUE(isLookingUp);
    answerLookup.release();
    EXPECT_TRUE(eventually([] { return !isLookingUp; }));
}

TEST(CurlDownload, WorksWhereFilesNeedNames) {
    const ChildEnd end = inChild([] {
        World world;
        forbidNamelessFiles();
        world.server.expect("/", {.body = "new"});
        EXPECT_EQ(world.run(), (News{"begin", "finish"}));
        world.server.expect("/", {.body = "newer", .fault = Fault::cutBody});
        world.expectFailure({"begin", "fail"}, "");
        EXPECT_EQ(contentsOf(world.request.destination), "new");
        EXPECT_EQ(namesIn(world.folder.path()), News{"Image.dmg"});
    });
    EXPECT_EQ(end.status, 0);
}

TEST(CurlDownload, AFullDiskFailsItOnceAndLeavesNothing) {
    const ChildEnd end = inChild([] {
        World world;
        const ScriptedAnswer twoMebibytes{.body = std::string(mebibyte, 'x'), .repeat = 2};
        if (::unshare(CLONE_FS | CLONE_NEWNS) == 0 &&
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("none", world.folder.path().c_str(), "tmpfs", 0, "size=1m") == 0) {
            world.server.expect("/", twoMebibytes);
            world.expectFailure({"begin", "fail"}, "room");
            ::umount(world.folder.path().c_str());
        } // else only root may
        constexpr rlimit oneMebibyte{mebibyte, mebibyte};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &oneMebibyte);
        world.server.expect("/", twoMebibytes);
        world.expectFailure({"begin", "fail"}, "too large");
        EXPECT_EQ(namesIn(world.folder.path()), News{});
    });
    EXPECT_EQ(end.status, 0);
}

TEST(CurlDownload, ItsMemoryDoesNotGrowWithTheBody) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer keeps freed memory";
#endif
    const auto peakFor = [](std::size_t mebibytes) {
        const ChildEnd end = inChild([mebibytes] {
            World world;
            world.server.expect("/", {.body = std::string(mebibyte, 'x'), .repeat = mebibytes});
            EXPECT_EQ(world.run(), (News{"begin", "finish"}));
            EXPECT_EQ(std::filesystem::file_size(world.request.destination), mebibytes * mebibyte);
        });
        EXPECT_EQ(end.status, 0);
        return end.peakKilobytes;
    };
    EXPECT_LT(peakFor(300), peakFor(3) + 4096);
}

TEST(HttpModule, FailsADownloadOnceWithTheReasonWhenItCannotBeLoaded) {
    const TemporaryFolder folder;
    FakeMainQueue queue;
    RecordingDelegate delegate;
    HttpModule module(folder / "module.so", queue);
    DownloadRequest request;
    request.url = "https://localhost/";
    const auto download = module.download(request, delegate);
    EXPECT_EQ(delegate.news, News{});
    queue.turn();
    queue.turn();
    EXPECT_EQ(delegate.news, News{"fail"});
    EXPECT_NE(delegate.error.description.find("module.so"), std::string::npos);
    EXPECT_EQ(delegate.error.failingUrl, request.url);
}

} // namespace
