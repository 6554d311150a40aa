#pragma once
// Start-up settings of the app host, read from its optional XML configuration file.
#include <platform/TextEncoding.h>

#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>
#include <log4cplus/logger.h>

#include <atomic>
#include <cstddef>
#include <string>

namespace Okaro
{
class AppHostConfiguration
{
public:
    static constexpr const char* DefaultFilePath = "/opt/userdata/etc/tavapphost/tavapphostconfig.xml";
    // Refused before parsing: the parser recurses per level and works on the whole text.
    static constexpr std::size_t MaxNestingDepth = 64;
    static constexpr std::size_t MaxTextSize = 1024 * 1024;

    AppHostConfiguration() = default;
    AppHostConfiguration(const AppHostConfiguration&) = delete;
    AppHostConfiguration& operator=(const AppHostConfiguration&) = delete;

    // The flags may be read and changed from any thread.
    bool IsInAppDebugMode() const { return appDebugMode_.load(); }
    bool IsAppHostStartupDisabled() const { return appHostStartupDisabled_.load(); }
    bool IsAppConnectorHostStartupDisabled() const { return appConnectorHostStartupDisabled_.load(); }
    bool IsAppHostWithoutKNX() const { return appHostWithoutKNX_.load(); }

    void SetAppDebugMode(bool active) { appDebugMode_.store(active); }
    void SetAppHostStartupDisabled(bool disabled) { appHostStartupDisabled_.store(disabled); }
    // Both return the previous value.
    bool ReplaceAppDebugMode(bool active) { return appDebugMode_.exchange(active); }
    bool SetAppConnectorHostStartupDisabled(bool disabled) { return appConnectorHostStartupDisabled_.exchange(disabled); }

    // The paths are written only while loading, which is meant for start-up.
    const boost::optional<std::string>& GetRootPathNativeApp() const { return rootPathNativeApp_; }
    const boost::optional<std::string>& GetRootPathManagedApp() const { return rootPathManagedApp_; }
    const boost::optional<std::string>& GetRootPathAppHost() const { return rootPathAppHost_; }
    const boost::optional<std::string>& GetRootPathAppConnectorHost() const { return rootPathAppConnectorHost_; }

    // Overlays what the file at DefaultFilePath states; a missing or broken file leaves every
    // setting as it was. Lines start with "[logPrefix] " when the prefix is not empty, and
    // carry a back-trace when it is.
    void LoadConfigurationFile(const log4cplus::Logger& logger, const UTF8String& logPrefix);
    // The same for another file, for tools and tests.
    void LoadConfigurationFile(const boost::filesystem::path& file, const log4cplus::Logger& logger,
                               const UTF8String& logPrefix);

    // Parses `text` in place and applies it; false, with nothing changed, when it cannot be read.
    // `text` must be writable and zero-terminated: the parser reads up to the zero.
    bool LoadAppHostConfigXML(char* text, const log4cplus::Logger& logger);

private:
    std::atomic<bool> appDebugMode_{false};
    std::atomic<bool> appHostStartupDisabled_{false};
    std::atomic<bool> appConnectorHostStartupDisabled_{false};
    std::atomic<bool> appHostWithoutKNX_{false};
    boost::optional<std::string> rootPathNativeApp_;
    boost::optional<std::string> rootPathManagedApp_;
    boost::optional<std::string> rootPathAppHost_;
    boost::optional<std::string> rootPathAppConnectorHost_;
};
} // namespace Okaro
