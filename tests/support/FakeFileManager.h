#pragma once

#include "platform/FileManager.h"
#include "support/Journal.h"

#include <map>
#include <set>

namespace join::test {

/// A tree of files and folders in memory. Changes go into the journal, failed ones as "cannot …".
class FakeFileManager final : public platform::FileManager {
public:
    explicit FakeFileManager(Journal& journal) : journal_(journal) {}

    /// Sets up a file or a folder, with its parents, without recording it.
    void put(const std::string& path, std::string contents);
    void putFolder(const std::string& path);

    /// From now on, changing or reading that path fails.
    void failAt(const std::string& path) { failing_.insert(plain(path)); }

    bool exists(const std::string& path) override { return nodes_.contains(plain(path)); }
    bool createFolder(const std::string& path) override;
    bool copy(const std::string& source, const std::string& target) override;
    bool replace(const std::string& source, const std::string& target) override;
    bool remove(const std::string& path) override;
    std::optional<std::string> read(const std::string& path) override;
    bool create(const std::string& path, std::string_view contents) override;
    bool truncate(const std::string& path) override;
    std::unique_ptr<platform::MappedFile> map(const std::string& path) override;
    std::unique_ptr<platform::ReadableFile> open(const std::string& path) override;

private:
    static std::string plain(const std::string& path);
    bool record(bool success, const std::string& action);
    bool canAppearAt(const std::string& plainPath) const;
    void copyTree(const std::string& plainSource, const std::string& plainTarget);
    std::vector<std::string> treeAt(const std::string& plainPath) const;

    Journal& journal_;
    std::map<std::string, std::optional<std::string>> nodes_{{"/", std::nullopt}}; ///< a folder has no bytes
    std::set<std::string> failing_;
};

} // namespace join::test
