#pragma once

#include <functional>
#include <memory>

namespace tallyfoot {

class Bundles;
class Clock;
class Console;
class CrashHooks;
class Dispatch;
class FileManager;
class KeyedArchiver;
class NetworkInterfaces;
class ProcessInfo;
class PropertyLists;
class Random;
class Screen;
class URLSession;
class UserDefaults;

// What the library needs of the system, handed down to whoever needs a piece of it.
struct PlatformServices {
    std::shared_ptr<Bundles> bundles;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Console> console;
    std::shared_ptr<CrashHooks> crashHooks;
    std::shared_ptr<Dispatch> dispatch;
    std::shared_ptr<FileManager> fileManager;
    std::shared_ptr<KeyedArchiver> keyedArchiver;
    std::shared_ptr<NetworkInterfaces> networkInterfaces;
    std::shared_ptr<ProcessInfo> processInfo;
    std::shared_ptr<PropertyLists> propertyLists;
    std::shared_ptr<Random> random;
    std::shared_ptr<Screen> screen;
    std::shared_ptr<UserDefaults> userDefaults;
    std::function<std::shared_ptr<URLSession>()> makeURLSession; // with the default configuration, cellular allowed
};

// The real ones, made once on first use and never released, so that a log call made while the
// process ends still finds them. Defined once per platform.
const PlatformServices& defaultPlatformServices();

} // namespace tallyfoot
