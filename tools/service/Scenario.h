#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace join::tools {

/// How the answers of the checks are spoilt.
enum class Broken {
    none,
    html,    ///< a web page
    empty,   ///< no bytes
    cut,     ///< a body shorter than its announced length
    garbage, ///< bytes that are not text
    reset,   ///< the connection is closed without an answer
    endless, ///< chunks until the client goes
    huge,    ///< 100 MB
    deep,    ///< a document nested 100,000 deep
    types,   ///< members of wrong types
};

/// How a request for a disk image fails.
enum class ImageFault {
    status,   ///< 500
    cut,      ///< half of the announced body
    stall,    ///< half of the announced body, then nothing until the client goes
    reset,    ///< the connection is closed without an answer
    redirect, ///< to plain HTTP
    html,     ///< a web page in place of the image
    garbage,  ///< bytes that are not an image
    endless,  ///< chunks until the client goes
};

/// How a log archive is answered.
enum class LogMailAnswer {
    success,  ///< the word SUCCESS
    lineFeed, ///< that word and a line feed
    error,    ///< 500, with a web page
    empty,    ///< no bytes
    reset,    ///< the connection is closed without an answer
    slow,     ///< success after three seconds
    stall,    ///< nothing until the client goes
    cut,      ///< half of the word, with its whole length announced
    garbage,  ///< bytes that are not text
    endless,  ///< chunks until the client goes
};

/// Stands for the service itself in place of a host.
inline constexpr std::string_view ownHost = "self";

/// What the service does, as its command line says.
struct Scenario {
    bool help = false;

    int port = 0; ///< 0: any
    std::string portFile;
    std::string logFile;
    std::string certificateFile;

    // Members of the version check's answer; one without a value is left out.
    std::optional<bool> updateNeeded = false;
    std::optional<std::string> cdnLink; ///< ownHost: the service's own localhost:PORT
    std::optional<std::string> awsServer;
    std::optional<std::string> awsUrl;

    std::vector<std::string> validKeys; ///< none: every key that is not empty is valid

    int status = 200; ///< of the checks
    std::chrono::milliseconds delay{0};
    std::string answerFile; ///< what the checks answer, byte for byte; empty: unused
    Broken broken = Broken::none;

    // Of the disk images; one without a path does not exist.
    std::string agentImage;
    std::string joinImage;
    std::optional<int> failingImages; ///< how many of the first requests for one fail
    std::optional<ImageFault> imageFault;

    // Of the log archives.
    LogMailAnswer logMail = LogMailAnswer::success;
    std::string logMailFolder; ///< where the forms are stored; empty: nowhere
};

/// Parses a command line without the program's name. The last of repeated options counts. Throws
/// std::invalid_argument, with one line of text, if it is wrong.
Scenario parseScenario(const std::vector<std::string>& arguments);

/// The text of --help.
std::string_view usage();

} // namespace join::tools
