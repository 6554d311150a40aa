#include <TavObjectModel/AppHostConfig.h>

#include <TavObjectModel/Backtrace.h>
#include <TavObjectModel/Utilities.h>
#include <TavObjectModel/XmlNesting.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <boost/filesystem/path.hpp>
#include <rapidxml/rapidxml.hpp>

#include <cstring>
#include <ios>
#include <memory>

// "[prefix] <function> - text" for callers that name themselves; without a prefix the line
// is "<function> - text" with the back-trace, so that an anonymous caller can be found.
#define TAV_LOG_LOAD_ERROR(logger, prefix, line, text)                                                      \
    do                                                                                                    \
    {                                                                                                     \
        if ((prefix).empty())                                                                             \
        {                                                                                                 \
            TAV_LOG_AT(logger, log4cplus::ERROR_LOG_LEVEL, ::Okaro::LogFile::AppHostConfig, line,         \
                       text << ::Okaro::FormatBacktraceSuffix());                                         \
        }                                                                                                 \
        else                                                                                              \
        {                                                                                                 \
            TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "[" << (prefix) << "] " << __func__,          \
                         ::Okaro::LogFile::AppHostConfig, line, text);                                    \
        }                                                                                                 \
    } while (false)

namespace Okaro
{
namespace
{
using XmlNode = rapidxml::xml_node<char>;

// This line names neither function nor prefix.
void LogReadFailure(const log4cplus::Logger& logger, const char* reason, int line)
{
    if (logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL))
    {
        logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, std::string("Failed to read configuration file: ") + reason,
                         LogFile::AppHostConfig, line);
    }
}

// A missing or empty attribute leaves the setting as it was.
const rapidxml::xml_attribute<char>* NonEmptyAttribute(const XmlNode& element, const char* name)
{
    const auto* attribute = element.first_attribute(name);
    return attribute != nullptr && attribute->value_size() > 0 ? attribute : nullptr;
}

// Only "0" is false; "false" and "no" are true as well.
void ApplyFlag(const XmlNode& element, const char* name, std::atomic<bool>& flag)
{
    if (const auto* attribute = NonEmptyAttribute(element, name))
    {
        flag.store(!(attribute->value_size() == 1 && attribute->value()[0] == '0'));
    }
}

void ApplyRootPath(const XmlNode& element, boost::optional<std::string>& path)
{
    if (const auto* attribute = NonEmptyAttribute(element, "RootPath"))
    {
        path = std::string(attribute->value(), attribute->value_size());
    }
}

bool IsNamed(const XmlNode& element, const char* name)
{
    return element.type() == rapidxml::node_element && std::strcmp(element.name(), name) == 0;
}
} // namespace

void AppHostConfiguration::LoadConfigurationFile(const log4cplus::Logger& logger, const UTF8String& logPrefix)
{
    LoadConfigurationFile(boost::filesystem::path(DefaultFilePath), logger, logPrefix);
}

void AppHostConfiguration::LoadConfigurationFile(const boost::filesystem::path& file, const log4cplus::Logger& logger,
                                                 const UTF8String& logPrefix)
{
    boost::optional<std::vector<char>> text = LoadFile(file.string());
    if (!text)
    {
        // Boost.Filesystem quotes the path and escapes '"' and '&' with '&'.
        TAV_LOG_LOAD_ERROR(logger, logPrefix, 88, "App host config file cannot be read from: " << file);
        return;
    }
    text->push_back('\0');
    if (!LoadAppHostConfigXML(text->data(), logger))
    {
        TAV_LOG_LOAD_ERROR(logger, logPrefix, 94, "Falling back to standard configuration.");
    }
}

bool AppHostConfiguration::LoadAppHostConfigXML(char* text, const log4cplus::Logger& logger)
{
    if (::strnlen(text, MaxTextSize + 1) > MaxTextSize)
    {
        LogReadFailure(logger, "text is larger than 1048576 bytes", 102);
        return false;
    }
    if (XmlNestingDepth(text, MaxNestingDepth) > MaxNestingDepth)
    {
        LogReadFailure(logger, "elements are nested deeper than 64 levels", 107);
        return false;
    }
    // The document holds a 64 KiB pool: too much for the small stacks of some callers.
    const auto document = std::make_unique<rapidxml::xml_document<char>>();
    try
    {
        document->parse<rapidxml::parse_default>(text);
    }
    catch (const rapidxml::parse_error& error)
    {
        LogReadFailure(logger, error.what(), 118);
        return false;
    }

    for (const XmlNode* root = document->first_node("TavAppHostConfig"); root != nullptr;
         root = root->next_sibling("TavAppHostConfig"))
    {
        ApplyFlag(*root, "WithoutKNX", appHostWithoutKNX_);
        for (const XmlNode* debugging = root->first_node("Debugging"); debugging != nullptr;
             debugging = debugging->next_sibling("Debugging"))
        {
            ApplyFlag(*debugging, "Active", appDebugMode_);
            if (!appDebugMode_.load())
            {
                continue;
            }
            for (const XmlNode* child = debugging->first_node(); child != nullptr; child = child->next_sibling())
            {
                if (IsNamed(*child, "App"))
                {
                    ApplyRootPath(*child, rootPathNativeApp_);
                }
                else if (IsNamed(*child, "ManagedApp"))
                {
                    ApplyRootPath(*child, rootPathManagedApp_);
                }
                else if (IsNamed(*child, "AppHost"))
                {
                    ApplyRootPath(*child, rootPathAppHost_);
                    ApplyFlag(*child, "DisableStartup", appHostStartupDisabled_);
                }
                else if (IsNamed(*child, "AppConnectorHost"))
                {
                    ApplyRootPath(*child, rootPathAppConnectorHost_);
                    ApplyFlag(*child, "DisableStartup", appConnectorHostStartupDisabled_);
                }
            }
        }
    }
    // The connector host cannot run without the app host.
    if (appHostStartupDisabled_.load())
    {
        appConnectorHostStartupDisabled_.store(true);
    }
    return true;
}
} // namespace Okaro
