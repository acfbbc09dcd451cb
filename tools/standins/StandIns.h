#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Programs that stand in for those that Join installs and starts. Each is a shell script that notes how it
/// was started and ends by itself after a while.
///
/// The note goes to the end of a file, agent.txt or crashdetector.txt, in the folder that TAVO_STANDIN_LOG
/// names, else in $HOME/tavo-standin, which is made when missing. One record for each start:
///
///     start
///     directory WORKING-DIRECTORY
///     argument FIRST
///     argument SECOND
///     end
///
/// In what stands after "directory " and "argument " a backslash is written \\ and a line feed \n; every
/// other byte stands for itself. A record is written in one go, and a reader that finds its last line has all
/// of it.
namespace join::tools {

inline constexpr std::string_view agentIdentifier = "com.tavo.fendel.Tavo";
inline constexpr std::string_view crashDetectorIdentifier = "com.tavo.TavoCrashDetector";
inline constexpr std::string_view defaultAgentVersion = "5.2";
inline constexpr std::string_view defaultCrashDetectorVersion = "1.4";

/// Makes the agent's bundle; its path is the one given ("…/Tavo.app"), and an older one there is replaced.
/// Its program runs for TAVO_STANDIN_SECONDS seconds, five without that variable. Throws std::system_error.
void makeAgentBundle(const std::filesystem::path& bundle, std::string_view version);

/// Makes the Crash Detector's program file, in place of an older one. It runs for a second. Throws
/// std::system_error.
void makeCrashDetector(const std::filesystem::path& file, std::string_view version);

/// The bytes of the Crash Detector: a script that is at the same time laid out as a 64-bit Mach-O file as far
/// as finding the property list in its section __TEXT,__info_plist goes.
std::string crashDetectorBytes(std::string_view version);

} // namespace join::tools
