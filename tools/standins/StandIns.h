#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Stand-ins for the programs that Join installs and starts. Each is a shell script that notes how it was
/// started and ends by itself after a while.
///
/// The note is appended to a file, agent.txt or crashdetector.txt, in the folder that TAVO_STANDIN_LOG names,
/// else in $HOME/tavo-standin, which is made if missing. One record for each start:
///
///     start
///     directory WORKING-DIRECTORY
///     argument FIRST
///     argument SECOND
///     end
///
/// After "directory " and "argument " a backslash is written \\ and a line feed \n; every other byte stands
/// for itself. A record is written at once: a reader that finds its last line has all of it.
namespace join::tools {

inline constexpr std::string_view agentIdentifier = "com.tavo.fendel.Tavo";
inline constexpr std::string_view crashDetectorIdentifier = "com.tavo.TavoCrashDetector";
inline constexpr std::string_view defaultAgentVersion = "5.2";
inline constexpr std::string_view defaultCrashDetectorVersion = "1.4";

/// Makes the agent's bundle at the given path ("…/Tavo.app"), in place of an older one. Its program runs for
/// TAVO_STANDIN_SECONDS seconds, five without that variable. Throws std::system_error.
void makeAgentBundle(const std::filesystem::path& bundle, std::string_view version);

/// Makes the Crash Detector's program file, in place of an older one. It runs for a second. Throws
/// std::system_error.
void makeCrashDetector(const std::filesystem::path& file, std::string_view version);

/// The bytes of the Crash Detector: a script that is also laid out as a 64-bit Mach-O file, far enough to
/// find the property list in its section __TEXT,__info_plist.
std::string crashDetectorBytes(std::string_view version);

} // namespace join::tools
