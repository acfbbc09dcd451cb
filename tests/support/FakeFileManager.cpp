#include "support/FakeFileManager.h"

namespace join::test {

namespace {

struct BytesInMemory final : platform::MappedFile, platform::ReadableFile {
    explicit BytesInMemory(std::string text) : held(std::move(text)) {}
    std::span<const std::byte> bytes() const override { return std::as_bytes(std::span(held)); }
    std::uint64_t size() const override { return held.size(); }
    std::size_t read(std::uint64_t offset, std::span<char> buffer) const override {
        return held.copy(buffer.data(), buffer.size(), offset);
    }
    std::string held;
};

std::string parentOf(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

} // namespace

std::string FakeFileManager::plain(const std::string& path) {
    std::string result;
    for (const char c : path)
        if (c != '/' || !result.ends_with('/'))
            result += c;
    return result.size() > 1 && result.ends_with('/') ? result.substr(0, result.size() - 1) : result;
}

bool FakeFileManager::record(bool success, const std::string& action) {
    journal_.push_back((success ? "" : "cannot ") + action);
    return success;
}

bool FakeFileManager::canAppearAt(const std::string& plainPath) const {
    const auto parent = nodes_.find(parentOf(plainPath));
    return !failing_.contains(plainPath) && parent != nodes_.end() && !parent->second;
}

std::vector<std::string> FakeFileManager::treeAt(const std::string& plainPath) const {
    std::vector<std::string> paths;
    for (const auto& [path, contents] : nodes_)
        if (path == plainPath || path.starts_with(plainPath + '/'))
            paths.push_back(path);
    return paths;
}

void FakeFileManager::copyTree(const std::string& plainSource, const std::string& plainTarget) {
    for (const std::string& path : treeAt(plainSource))
        nodes_[plainTarget + path.substr(plainSource.size())] = nodes_[path];
}

void FakeFileManager::putFolder(const std::string& path) {
    for (std::string folder = plain(path); folder != "/"; folder = parentOf(folder))
        nodes_.try_emplace(folder);
}

void FakeFileManager::put(const std::string& path, std::string contents) {
    putFolder(parentOf(plain(path)));
    nodes_[plain(path)] = std::move(contents);
}

bool FakeFileManager::createFolder(const std::string& path) {
    putFolder(path);
    return record(true, "create folder " + path);
}

bool FakeFileManager::copy(const std::string& source, const std::string& target) {
    const std::string from = plain(source);
    const std::string to = plain(target);
    const bool possible = exists(from) && !exists(to) && canAppearAt(to);
    if (possible)
        copyTree(from, to);
    return record(possible, "copy " + source + " -> " + target);
}

bool FakeFileManager::replace(const std::string& source, const std::string& target) {
    const std::string to = plain(target);
    const bool possible = exists(source) && canAppearAt(to);
    if (possible) {
        for (const std::string& part : treeAt(to))
            nodes_.erase(part);
        copyTree(plain(source), to);
    }
    return record(possible, "replace " + target + " by " + source);
}

bool FakeFileManager::remove(const std::string& path) {
    const bool possible = exists(path) && !failing_.contains(plain(path));
    if (possible)
        for (const std::string& part : treeAt(plain(path)))
            nodes_.erase(part);
    return record(possible, "remove " + path);
}

std::optional<std::string> FakeFileManager::read(const std::string& path) {
    return exists(path) && !failing_.contains(plain(path)) ? nodes_[plain(path)] : std::nullopt;
}

bool FakeFileManager::create(const std::string& path, std::string_view contents) {
    const bool possible = canAppearAt(plain(path));
    if (possible)
        nodes_[plain(path)] = contents;
    return record(possible, "create " + path);
}

bool FakeFileManager::truncate(const std::string& path) {
    const bool possible = read(path).has_value();
    if (possible)
        nodes_[plain(path)] = "";
    return record(possible, "truncate " + path);
}

std::unique_ptr<platform::MappedFile> FakeFileManager::map(const std::string& path) {
    const std::string bytes = read(path).value_or("");
    return bytes.empty() ? nullptr : std::make_unique<BytesInMemory>(bytes);
}

std::unique_ptr<platform::ReadableFile> FakeFileManager::open(const std::string& path) {
    const auto bytes = read(path);
    return bytes ? std::make_unique<BytesInMemory>(*bytes) : nullptr;
}

} // namespace join::test
