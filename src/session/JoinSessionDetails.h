#pragma once

#include "base/Text.h"
#include "session/Atomic.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace join {

/// The kinds of session.
namespace SessionType {
inline constexpr std::int32_t meeting = 0;
inline constexpr std::int32_t remoteSupport = 1;
inline constexpr std::int32_t unattended = 2;
} // namespace SessionType

/// The kinds of join: on the first run of a freshly downloaded Join app, or on a later run.
namespace JoinType {
inline constexpr std::int32_t firstRemoteSupport = 0;
inline constexpr std::int32_t firstMeeting = 1;
inline constexpr std::int32_t remoteSupport = 2;
inline constexpr std::int32_t meeting = 3;
} // namespace JoinType

/// Whether the Join app has just been downloaded.
enum class JoinRun { first, later };

/// Returns the kind of session that a key opens, judged by its length: a meeting from 10 characters on,
/// remote support with exactly 9, nothing for a shorter key.
std::optional<std::int32_t> sessionTypeForKey(std::string_view key);

/// Everything that the Join app knows about the current session, kept for the whole run. Nothing else carries
/// session data between the subsystems. Every read and write of a property is atomic, from any thread. A text
/// that was never set is absent.
class JoinSessionDetails {
public:
    /// Returns the one instance, created on the first call, or nullptr if that failed, which is logged.
    /// Callers that cannot continue without it use session().
    static JoinSessionDetails* getInstance();

    /// Writes the session defaults. Properties without a default keep their values.
    static void setDefaultValues();

    /// Derives the kind of join from the kind of session; an unattended session leaves it unchanged.
    void setJoinTypeOf(JoinRun run);

    /// Sets the e-mail address to "Guest" if it is not known.
    void nameGuest();

    /// Starts a bundle's main executable as a child process in that working directory, without arguments, and
    /// does not wait for it. A failure is logged.
    void launchApplicationWith(const std::string& bundlePath, const std::string& directory);

    Atomic<Text> key;                ///< session key, typed by the user or received from the web page
    Atomic<Text> emailID;            ///< e-mail address of the user who joins; "Guest" when none is known
    Atomic<Text> gatewayName;        ///< host name of the gateway the agent connects through
    Atomic<Text> defaultGatewayName; ///< host name of the default gateway, for the agent too
    Atomic<Text> webServerName;      ///< host name of the web server that all HTTPS calls go to
    Atomic<Text> firstTime;        ///< "true" when the parameter file came with a freshly downloaded Join app
    Atomic<Text> roleChangeOnInit; ///< flag passed on to the agent unchanged
    Atomic<Text> viewerId;         ///< viewer identifier passed on to the agent unchanged
    Atomic<Text> firstTimeInstall; ///< flag passed on to the agent unchanged
    Atomic<Text> isDemoMode;       ///< "true" or "false", passed on to the agent
    Atomic<Text> isDemoTech;       ///< "true" or "false", passed on to the agent
    Atomic<Text> authkey;          ///< authentication key passed on to the agent unchanged
    Atomic<Text> group;            ///< group name passed on to the agent
    Atomic<Text> isConfirmationNeeded;           ///< flag passed on to the agent unchanged
    Atomic<bool> isCrashDetectorLaunched;        ///< the Crash Detector has been started in this run
    Atomic<bool> isCrashDetectorDownloadStarted; ///< a separate Crash Detector download has begun
    Atomic<Text> tavoAppVersion; ///< latest agent version announced by the web page or the parameter file
    Atomic<Text> joinAppVersion; ///< latest Join app version announced by the web page or the parameter file
    Atomic<Text> crashDetectorAppVersion;      ///< latest Crash Detector version announced
    Atomic<Text> localTavoAppVersion;          ///< version of the installed agent, "0" when none is installed
    Atomic<Text> localJoinAppVersion;          ///< only the default is ever written
    Atomic<Text> localCrashDetectorAppVersion; ///< never written
    Atomic<Text> awsUrl;               ///< download URL of the storage server that the session check named
    Atomic<Text> awsServer;            ///< storage server that the session check named
    Atomic<bool> isAwsAvailable;       ///< the session check named a storage server
    Atomic<Text> cdnUrl;               ///< content-delivery host that the session check named
    Atomic<bool> isCdnAvailable;       ///< cdnUrl is to be used for downloads
    Atomic<std::int32_t> retryCounter; ///< agent disk-image downloads retried so far
    Atomic<bool> isUpdateNeeded;       ///< the session check says that the installed agent must be replaced
    Atomic<std::int32_t> sessionType;  ///< a SessionType
    Atomic<std::int32_t> joinType;     ///< a JoinType
};

/// Returns the one instance of the session's state. Throws platform::Exception if there is none.
JoinSessionDetails& session();

} // namespace join
