#pragma once

namespace join::platform {

class Application;
class Bundles;
class Clock;
class FileManager;
class HttpClient;
class Json;
class Log;
class MainQueue;
class NotificationCenter;
class Paths;
class PropertyLists;
class Strings;
class Tasks;
class Timers;
class TrustPolicy;
class UrlEvents;
class Windows;
class Workspace;

/// Every service of the platform. Filled in once by the composition root, which owns them and outlives the
/// logic.
struct Services {
    Application* application = nullptr;
    Bundles* bundles = nullptr;
    Clock* clock = nullptr;
    FileManager* fileManager = nullptr;
    HttpClient* httpClient = nullptr;
    Json* json = nullptr;
    Log* log = nullptr;
    MainQueue* mainQueue = nullptr;
    NotificationCenter* notificationCenter = nullptr;
    Paths* paths = nullptr;
    PropertyLists* propertyLists = nullptr;
    Strings* strings = nullptr;
    Tasks* tasks = nullptr;
    Timers* timers = nullptr;
    TrustPolicy* trustPolicy = nullptr;
    UrlEvents* urlEvents = nullptr;
    Windows* windows = nullptr;
    Workspace* workspace = nullptr;
};

/// Returns the services through which the logic reaches everything.
Services& services();

} // namespace join::platform
