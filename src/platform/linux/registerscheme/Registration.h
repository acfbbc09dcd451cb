#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace join::platform::registerscheme {

/// A desktop entry that becomes the default handler of a URL scheme.
struct Registration {
    std::string scheme;
    std::string entryId;            ///< the name of the entry's file
    std::string applicationsFolder; ///< absolute path of the folder that it lies in
};

/// The registration that the program's arguments tell; nothing when they tell none.
std::optional<Registration> registrationFrom(const std::vector<std::string>& arguments);

/// Runs update-desktop-database and xdg-mime, each also when the other one fails, and each no longer than
/// the patience lasts. Of the environment they get PATH and where the user's folders are, so that xdg-mime
/// changes one line of the user's mimeapps.list and asks no desktop for files of its own. Gives what failed,
/// a line for each tool. Throws Exception when the user has no home folder. For a process with one thread.
std::vector<std::string> runTools(const Registration& registration,
                                  std::chrono::milliseconds patience = std::chrono::seconds(10));

} // namespace join::platform::registerscheme
