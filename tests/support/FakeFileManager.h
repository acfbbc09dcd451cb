#pragma once

#include "platform/FileManager.h"
#include "support/Journal.h"

#include <filesystem>
#include <map>
#include <set>

namespace join::test {

/// A tree of files and folders in memory. Changes go into the journal, failed ones as "cannot …".
class FakeFileManager final : public platform::FileManager {
public:
    explicit FakeFileManager(Journal& journal) : journal_(journal) {}

    /// Sets up a file or a folder, with its parents, without recording it.
    void put(const std::string& path, std::string contents) {
        putFolder(parentOf(plain(path)));
        nodes_[plain(path)] = std::move(contents);
    }
    void putFolder(const std::string& path) {
        for (std::string folder = plain(path); folder != "/"; folder = parentOf(folder))
            nodes_.try_emplace(folder);
    }

    /// From now on, changing or reading that path fails.
    void failAt(const std::string& path) { failing_.insert(plain(path)); }

    bool exists(const std::string& path) override { return nodes_.contains(plain(path)); }
    bool createFolder(const std::string& path) override {
        putFolder(path);
        return record(true, "create folder " + path);
    }
    bool copy(const std::string& source, const std::string& target) override {
        return copy("copy ", source, target);
    }
    bool install(const std::string& source, const std::string& target) override {
        return copy("install ", source, target);
    }
    bool installFromVolume(const std::string& source, const std::string& target) override {
        return copy("install ", source, target);
    }
    bool copy(const std::string& way, const std::string& source, const std::string& target) {
        const std::string from = plain(source);
        const std::string to = plain(target);
        const bool possible = exists(from) && !exists(to) && canAppearAt(to);
        if (possible)
            copyTree(from, to);
        return record(possible, way + source + " -> " + target);
    }
    bool replace(const std::string& source, const std::string& target) override {
        const std::string to = plain(target);
        const bool possible = exists(source) && canAppearAt(to);
        if (possible) {
            for (const std::string& part : treeAt(to))
                nodes_.erase(part);
            copyTree(plain(source), to);
        }
        return record(possible, "replace " + target + " by " + source);
    }
    bool remove(const std::string& path) override {
        if (!exists(path))
            return false;
        const bool possible = !failing_.contains(plain(path));
        if (possible)
            for (const std::string& part : treeAt(plain(path)))
                nodes_.erase(part);
        return record(possible, "remove " + path);
    }
    std::optional<std::string> read(const std::string& path) override {
        return exists(path) && !failing_.contains(plain(path)) ? nodes_[plain(path)] : std::nullopt;
    }
    bool create(const std::string& path, std::string_view contents) override {
        const bool possible = canAppearAt(plain(path));
        if (possible)
            nodes_[plain(path)] = contents;
        return record(possible, "create " + path);
    }
    bool truncate(const std::string& path) override {
        const bool possible = read(path).has_value();
        if (possible)
            nodes_[plain(path)] = "";
        return record(possible, "truncate " + path);
    }
    platform::MappedFile map(const std::string& path) override {
        if (read(path).value_or("").empty())
            return nullptr;
        return std::make_shared<std::span<const std::byte>>(std::as_bytes(std::span(*nodes_[plain(path)])));
    }
    std::unique_ptr<platform::ReadableFile> open(const std::string& path) override {
        const auto bytes = read(path);
        return bytes ? std::make_unique<BytesInMemory>(*bytes) : nullptr;
    }

private:
    struct BytesInMemory final : platform::ReadableFile {
        explicit BytesInMemory(std::string text) : held(std::move(text)) {}
        std::uint64_t size() const override { return held.size(); }
        std::size_t read(std::uint64_t offset, std::span<char> buffer) const override {
            return held.copy(buffer.data(), buffer.size(), offset);
        }
        std::string held;
    };

    static std::string parentOf(const std::string& path) { return std::filesystem::path(path).parent_path(); }
    /// Without double separators or one at the end.
    static std::string plain(const std::string& path) {
        return std::filesystem::path(path + '/').lexically_normal().parent_path();
    }

    bool record(bool success, const std::string& action) {
        journal_.push_back((success ? "" : "cannot ") + action);
        return success;
    }

    bool canAppearAt(const std::string& plainPath) const {
        const auto parent = nodes_.find(parentOf(plainPath));
        return !failing_.contains(plainPath) && parent != nodes_.end() && !parent->second;
    }

    std::vector<std::string> treeAt(const std::string& plainPath) const {
        std::vector<std::string> paths;
        for (const auto& [path, contents] : nodes_)
            if (path == plainPath || path.starts_with(plainPath + '/'))
                paths.push_back(path);
        return paths;
    }

    void copyTree(const std::string& plainSource, const std::string& plainTarget) {
        for (const std::string& path : treeAt(plainSource))
            nodes_[plainTarget + path.substr(plainSource.size())] = nodes_[path];
    }

    Journal& journal_;
    std::map<std::string, std::optional<std::string>> nodes_{{"/", std::nullopt}}; ///< a folder has no bytes
    std::set<std::string> failing_;
};

} // namespace join::test
