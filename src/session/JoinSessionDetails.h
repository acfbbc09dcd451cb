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

/// The kinds of join: on the first run of a freshly downloaded Join app, or with one that was there.
namespace JoinType {
inline constexpr std::int32_t firstRemoteSupport = 0;
inline constexpr std::int32_t firstMeeting = 1;
inline constexpr std::int32_t remoteSupport = 2;
inline constexpr std::int32_t meeting = 3;
} // namespace JoinType

/// The kind of session that a key opens, told by its length: a meeting from 10 characters on, remote support
/// with exactly 9, nothing for a shorter key.
std::optional<std::int32_t> sessionTypeForKey(std::string_view key);

/// Everything that the Join app knows about the session in hand, held for the whole run. Nothing else carries
/// session data between the subsystems. Every read and every write of a property is indivisible, from any
/// thread; a text that was never set is absent.
class JoinSessionDetails {
public:
    /// The one instance, made on the first call; nullptr when that failed, which the log then says. Callers
    /// that cannot go on without it take session().
    static JoinSessionDetails* getInstance();

    /// Writes the session defaults. Properties that have none keep what they hold.
    static void setDefaultValues();

    /// Starts a bundle's main executable as a child process in that working directory, without arguments, and
    /// leaves it alone. A failure is logged and starts nothing.
    void launchApplicationWith(const std::string& bundlePath, const std::string& directory);

    Text key() const { return key_.get(); }
    void setKey(Text value) { key_.set(std::move(value)); }
    Text emailID() const { return emailID_.get(); }
    void setEmailID(Text value) { emailID_.set(std::move(value)); }
    Text gatewayName() const { return gatewayName_.get(); }
    void setGatewayName(Text value) { gatewayName_.set(std::move(value)); }
    Text defaultGatewayName() const { return defaultGatewayName_.get(); }
    void setDefaultGatewayName(Text value) { defaultGatewayName_.set(std::move(value)); }
    Text webServerName() const { return webServerName_.get(); }
    void setWebServerName(Text value) { webServerName_.set(std::move(value)); }
    Text firstTime() const { return firstTime_.get(); }
    void setFirstTime(Text value) { firstTime_.set(std::move(value)); }
    Text roleChangeOnInit() const { return roleChangeOnInit_.get(); }
    void setRoleChangeOnInit(Text value) { roleChangeOnInit_.set(std::move(value)); }
    Text viewerId() const { return viewerId_.get(); }
    void setViewerId(Text value) { viewerId_.set(std::move(value)); }
    Text firstTimeInstall() const { return firstTimeInstall_.get(); }
    void setFirstTimeInstall(Text value) { firstTimeInstall_.set(std::move(value)); }
    Text isDemoMode() const { return isDemoMode_.get(); }
    void setIsDemoMode(Text value) { isDemoMode_.set(std::move(value)); }
    Text isDemoTech() const { return isDemoTech_.get(); }
    void setIsDemoTech(Text value) { isDemoTech_.set(std::move(value)); }
    Text authkey() const { return authkey_.get(); }
    void setAuthkey(Text value) { authkey_.set(std::move(value)); }
    Text group() const { return group_.get(); }
    void setGroup(Text value) { group_.set(std::move(value)); }
    Text isConfirmationNeeded() const { return isConfirmationNeeded_.get(); }
    void setIsConfirmationNeeded(Text value) { isConfirmationNeeded_.set(std::move(value)); }
    bool isCrashDetectorLaunched() const { return isCrashDetectorLaunched_.get(); }
    void setIsCrashDetectorLaunched(bool value) { isCrashDetectorLaunched_.set(value); }
    bool isCrashDetectorDownloadStarted() const { return isCrashDetectorDownloadStarted_.get(); }
    void setIsCrashDetectorDownloadStarted(bool value) { isCrashDetectorDownloadStarted_.set(value); }
    Text tavoAppVersion() const { return tavoAppVersion_.get(); }
    void setTavoAppVersion(Text value) { tavoAppVersion_.set(std::move(value)); }
    Text joinAppVersion() const { return joinAppVersion_.get(); }
    void setJoinAppVersion(Text value) { joinAppVersion_.set(std::move(value)); }
    Text crashDetectorAppVersion() const { return crashDetectorAppVersion_.get(); }
    void setCrashDetectorAppVersion(Text value) { crashDetectorAppVersion_.set(std::move(value)); }
    Text localTavoAppVersion() const { return localTavoAppVersion_.get(); }
    void setLocalTavoAppVersion(Text value) { localTavoAppVersion_.set(std::move(value)); }
    Text localJoinAppVersion() const { return localJoinAppVersion_.get(); }
    void setLocalJoinAppVersion(Text value) { localJoinAppVersion_.set(std::move(value)); }
    Text localCrashDetectorAppVersion() const { return localCrashDetectorAppVersion_.get(); }
    void setLocalCrashDetectorAppVersion(Text value) { localCrashDetectorAppVersion_.set(std::move(value)); }
    Text awsUrl() const { return awsUrl_.get(); }
    void setAwsUrl(Text value) { awsUrl_.set(std::move(value)); }
    Text awsServer() const { return awsServer_.get(); }
    void setAwsServer(Text value) { awsServer_.set(std::move(value)); }
    bool isAwsAvailable() const { return isAwsAvailable_.get(); }
    void setIsAwsAvailable(bool value) { isAwsAvailable_.set(value); }
    Text cdnUrl() const { return cdnUrl_.get(); }
    void setCdnUrl(Text value) { cdnUrl_.set(std::move(value)); }
    bool isCdnAvailable() const { return isCdnAvailable_.get(); }
    void setIsCdnAvailable(bool value) { isCdnAvailable_.set(value); }
    std::int32_t retryCounter() const { return retryCounter_.get(); }
    void setRetryCounter(std::int32_t value) { retryCounter_.set(value); }
    bool isUpdateNeeded() const { return isUpdateNeeded_.get(); }
    void setIsUpdateNeeded(bool value) { isUpdateNeeded_.set(value); }
    std::int32_t sessionType() const { return sessionType_.get(); }
    void setSessionType(std::int32_t value) { sessionType_.set(value); }
    std::int32_t joinType() const { return joinType_.get(); }
    void setJoinType(std::int32_t value) { joinType_.set(value); }

private:
    friend void emptyProcessSlots();
    static void forgetInstance();

    Atomic<Text> key_;         ///< session key, typed by the user or received from the web page
    Atomic<Text> emailID_;     ///< e-mail address of the user who joins; "Guest" when none is known
    Atomic<Text> gatewayName_; ///< host name of the gateway the agent connects through
    Atomic<Text>
        defaultGatewayName_;     ///< host name of the default gateway, passed to the agent beside gatewayName
    Atomic<Text> webServerName_; ///< host name of the web server that all HTTPS calls go to
    Atomic<Text> firstTime_;     ///< "true" when the parameter file came with a freshly downloaded Join app
    Atomic<Text> roleChangeOnInit_;               ///< flag passed on to the agent unchanged
    Atomic<Text> viewerId_;                       ///< viewer identifier passed on to the agent unchanged
    Atomic<Text> firstTimeInstall_;               ///< flag passed on to the agent unchanged
    Atomic<Text> isDemoMode_;                     ///< "true" or "false", passed on to the agent
    Atomic<Text> isDemoTech_;                     ///< "true" or "false", passed on to the agent
    Atomic<Text> authkey_;                        ///< authentication key passed on to the agent unchanged
    Atomic<Text> group_;                          ///< group name passed on to the agent
    Atomic<Text> isConfirmationNeeded_;           ///< flag passed on to the agent unchanged
    Atomic<bool> isCrashDetectorLaunched_;        ///< the Crash Detector has been started in this run
    Atomic<bool> isCrashDetectorDownloadStarted_; ///< a separate Crash Detector download has begun
    Atomic<Text> tavoAppVersion_; ///< latest agent version announced by the web page or the parameter file
    Atomic<Text> joinAppVersion_; ///< latest Join app version announced by the web page or the parameter file
    Atomic<Text> crashDetectorAppVersion_; ///< latest Crash Detector version announced
    Atomic<Text> localTavoAppVersion_;     ///< version of the installed agent, "0" when none is installed
    Atomic<Text>
        localJoinAppVersion_; ///< version of the installed Join app; only the default is ever written
    Atomic<Text> localCrashDetectorAppVersion_; ///< version of the installed Crash Detector; never written
    Atomic<Text> awsUrl_;               ///< download URL of the storage server that the session check named
    Atomic<Text> awsServer_;            ///< storage server that the session check named
    Atomic<bool> isAwsAvailable_;       ///< the session check named a storage server
    Atomic<Text> cdnUrl_;               ///< content-delivery host that the session check named
    Atomic<bool> isCdnAvailable_;       ///< cdnUrl is to be used for downloads
    Atomic<std::int32_t> retryCounter_; ///< agent disk-image downloads retried so far
    Atomic<bool> isUpdateNeeded_;       ///< the session check says that the installed agent must be replaced
    Atomic<std::int32_t> sessionType_;  ///< a SessionType
    Atomic<std::int32_t> joinType_;     ///< a JoinType
};

/// The one instance of the session's state. Throws platform::Exception when there is none.
JoinSessionDetails& session();

} // namespace join
