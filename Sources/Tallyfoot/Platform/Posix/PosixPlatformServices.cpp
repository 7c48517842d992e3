#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/Posix/PosixBundles.h"
#include "Tallyfoot/Platform/Posix/PosixClock.h"
#include "Tallyfoot/Platform/Posix/PosixConsole.h"
#include "Tallyfoot/Platform/Posix/PosixCrashHooks.h"
#include "Tallyfoot/Platform/Posix/PosixDispatch.h"
#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixKeyedArchiver.h"
#include "Tallyfoot/Platform/Posix/PosixNetworkInterfaces.h"
#include "Tallyfoot/Platform/Posix/PosixProcessInfo.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixRandom.h"
#include "Tallyfoot/Platform/Posix/PosixScreen.h"
#include "Tallyfoot/Platform/Posix/PosixURLSession.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"
#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

namespace tallyfoot {

namespace {

PlatformServices posixPlatformServices() {
    PlatformServices services;
    const auto propertyLists = std::make_shared<PosixPropertyLists>();
    const auto bundles = std::make_shared<PosixBundles>(propertyLists);
    services.bundles = bundles;
    services.clock = std::make_shared<PosixClock>();
    services.console = std::make_shared<PosixConsole>();
    services.crashHooks = std::make_shared<PosixCrashHooks>();
    services.dispatch = std::make_shared<PosixDispatch>();
    services.fileManager = std::make_shared<PosixFileManager>();
    services.keyedArchiver = std::make_shared<PosixKeyedArchiver>();
    services.networkInterfaces = std::make_shared<PosixNetworkInterfaces>();
    services.processInfo = std::make_shared<PosixProcessInfo>();
    services.propertyLists = propertyLists;
    services.random = std::make_shared<PosixRandom>();
    services.screen = std::make_shared<PosixScreen>();
    // Without a home the values live as long as the process.
    services.userDefaults = std::make_shared<PosixUserDefaults>(
        userDefaultsFolder(bundles->applicationPath()).value_or(std::string()), propertyLists);
    services.makeURLSession = [] { return std::make_shared<PosixURLSession>(); };
    return services;
}

} // namespace

const PlatformServices& defaultPlatformServices() {
    static const auto& services = *new PlatformServices(posixPlatformServices());
    return services;
}

} // namespace tallyfoot
