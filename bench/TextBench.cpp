// How the time to read and write grows with hostile sizes: each figure is next to the one for ten times the
// input.

#include "base/Format.h"
#include "diag/EmbeddedPropertyList.h"
#include "params/JoinParameterFile.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "platform/linux/system/StderrLog.h"
#include "platform/linux/system/SystemClock.h"
#include "session/JoinSessionDetails.h"
#include "url/JoinDetails.h"
#include "url/LaunchUrl.h"

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace join {
namespace {

std::string repeated(std::string_view piece, std::int64_t size) {
    std::string text;
    while (static_cast<std::int64_t>(text.size()) < size)
        text += piece;
    return text;
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(1'000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000);
}

void parseLaunchUrlOfOneName(benchmark::State& state) {
    const std::string url = "tavojoin://" + repeated("k=123456789&", state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(parseLaunchUrl(url));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(url.size()));
}
BENCHMARK(parseLaunchUrlOfOneName)->Apply(sizes);

void parseLaunchUrlOfManyNames(benchmark::State& state) {
    std::string url = "tavojoin://";
    for (int i = 0; static_cast<std::int64_t>(url.size()) < state.range(0); ++i)
        url += formatted("n%d=v&", i);
    for (auto _ : state)
        benchmark::DoNotOptimize(parseLaunchUrl(url));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(url.size()));
}
BENCHMARK(parseLaunchUrlOfManyNames)->Apply(sizes);

void encodeLaunchUrlOfControlCharacters(benchmark::State& state) {
    const std::string bytes = repeated("\x1b\xff", state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(launchUrlText(bytes));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(encodeLaunchUrlOfControlCharacters)->Apply(sizes);

void readJoinParameterItems(benchmark::State& state) {
    const std::string file =
        std::string(joinParameterHeader) + repeated("&key=123456789key=", state.range(0));
    for (auto _ : state)
        for (const std::string_view item : split(*joinParameterBody(file), "&"))
            if (const JoinParameter* parameter = joinParameterOf(item))
                benchmark::DoNotOptimize(joinParameterValue(item, parameter->name));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}
BENCHMARK(readJoinParameterItems)->Apply(sizes);

void updateJoinDetails(benchmark::State& state) {
    const std::string body = repeated("&authToken=A&key=old&gatewayName=gw4", state.range(0));
    const JoinSessionDetails details;
    for (auto _ : state)
        benchmark::DoNotOptimize(updatedJoinDetails(readOldJoinDetails(body), details));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(body.size()));
}
BENCHMARK(updateJoinDetails)->Apply(sizes);

void parseSessionAnswer(benchmark::State& state) {
    const std::string answer = R"({"response":{"result":{"meeting":{"update_needed":false)" +
                               repeated(R"(,"cdn_link":"cdn.example.org")", state.range(0)) + "}}}}";
    platform::NlohmannJson json;
    for (auto _ : state)
        benchmark::DoNotOptimize(json.parse(answer));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
BENCHMARK(parseSessionAnswer)->Apply(sizes);

void walkLoadCommands(benchmark::State& state) {
    constexpr std::uint32_t commandSize = 24;
    const auto commands = static_cast<std::uint32_t>(state.range(0) / commandSize);
    std::vector<std::byte> file(32 + std::size_t{commands} * commandSize);
    std::memcpy(&file[16], &commands, sizeof commands);
    for (std::uint32_t i = 0; i < commands; ++i)
        std::memcpy(&file[32 + std::size_t{i} * commandSize + 4], &commandSize, sizeof commandSize);
    for (auto _ : state)
        benchmark::DoNotOptimize(embeddedPropertyList(file));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}
BENCHMARK(walkLoadCommands)->Apply(sizes);

/// Restores the standard streams at the end.
class StandardStreamsKept {
public:
    StandardStreamsKept() {
        for (int stream = 0; stream < 3; ++stream)
            kept_[stream] = ::dup(stream);
    }
    ~StandardStreamsKept() {
        for (int stream = 0; stream < 3; ++stream) {
            ::dup2(kept_[stream], stream);
            ::close(kept_[stream]);
        }
    }
    StandardStreamsKept(const StandardStreamsKept&) = delete;
    StandardStreamsKept& operator=(const StandardStreamsKept&) = delete;

private:
    std::array<int, 3> kept_{};
};

/// What the log costs ten times a second, to compare with the one stat of the file that it needs.
void tick(benchmark::State& state) {
    const std::string file = std::filesystem::temp_directory_path() / "join-bench-tick.log";
    platform::SystemClock clock;
    platform::StderrLog log("Join", clock);
    const StandardStreamsKept kept;
    for (auto _ : state)
        benchmark::DoNotOptimize(log.redirectStandardStreams(file));
    std::filesystem::remove(file);
}
BENCHMARK(tick);

void statOfTheSameFile(benchmark::State& state) {
    const std::string file = std::filesystem::temp_directory_path() / "join-bench-tick.log";
    std::ofstream(file) << "a line\n";
    struct stat status {};
    for (auto _ : state)
        benchmark::DoNotOptimize(::stat(file.c_str(), &status));
    std::filesystem::remove(file);
}
BENCHMARK(statOfTheSameFile);

} // namespace
} // namespace join
