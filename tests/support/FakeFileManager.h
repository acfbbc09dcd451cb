#pragma once

#include "platform/FileManager.h"
#include "support/Journal.h"

#include <filesystem>
#include <map>
#include <set>

namespace join::test {

/// A tree of files and folders in memory. Changes go into the journal, failed ones as "cannot …".
class FakeFileManager final : public platform::FileManager, Recorder {
public:
    using Recorder::Recorder;

    /// Sets up a file or a folder, with its parents, without recording it.
    void put(const std::string& path, std::string_view contents) {
        putFolder(parentOf(path));
        set(path, contents);
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
        return did(true, "create folder " + path);
    }
    bool copy(const std::string& source, const std::string& target) override {
        return did(!exists(target) && copyTree(source, target), "copy " + source + " -> " + target);
    }
    bool install(const std::string& source, const std::string& target) override {
        return did(!exists(target) && copyTree(source, target), "install " + source + " -> " + target);
    }
    bool installFromVolume(const std::string& source, const std::string& target) override {
        return install(source, target);
    }
    bool replace(const std::string& source, const std::string& target) override {
        return did(copyTree(source, target), "replace " + target + " by " + source);
    }
    bool remove(const std::string& path) override {
        return exists(path) && did(!failing_.contains(plain(path)) && removeTree(path), "remove " + path);
    }
    std::optional<std::string> read(const std::string& path) override {
        return exists(path) && !failing_.contains(plain(path)) ? nodes_[plain(path)] : std::nullopt;
    }
    bool create(const std::string& path, std::string_view contents) override {
        return did(canAppearAt(path) && set(path, contents), "create " + path);
    }
    bool truncate(const std::string& path) override {
        return did(read(path) && set(path, ""), "truncate " + path);
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

    /// With one separator behind each name, so that a path begins with the folder that it lies in.
    static std::string plain(const std::string& path) {
        return std::filesystem::path(path + '/').lexically_normal();
    }
    static std::string parentOf(const std::string& path) { return plain(path + "/.."); }

    bool did(bool success, const std::string& action) {
        record((success ? "" : "cannot ") + action);
        return success;
    }

    bool canAppearAt(const std::string& path) {
        return !failing_.contains(plain(path)) && exists(parentOf(path));
    }
    bool set(const std::string& path, std::string_view contents) {
        nodes_[plain(path)] = contents;
        return true;
    }

    bool removeTree(const std::string& top) {
        return std::erase_if(nodes_, [&](const auto& node) { return node.first.starts_with(plain(top)); });
    }

    bool copyTree(const std::string& source, const std::string& target) {
        if (!exists(source) || !canAppearAt(target))
            return false;
        removeTree(target);
        for (const auto& [path, contents] : std::map(nodes_))
            if (path.starts_with(plain(source)))
                nodes_[plain(target) + path.substr(plain(source).size())] = contents;
        return true;
    }

    std::map<std::string, std::optional<std::string>> nodes_{{"/", std::nullopt}}; ///< a folder has no bytes
    std::set<std::string> failing_;
};

} // namespace join::test
