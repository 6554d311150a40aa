#pragma once
// What can stop a project from being read at all. Everything that can be skipped is skipped with
// a WARN line on the logger "TavProject" instead; this is only thrown where nothing useful is left.
#include <stdexcept>
#include <string>

namespace TavProject
{
enum class ProjectErrorKind
{
    CannotOpen,        // the file cannot be opened or read
    NotAnArchive,      // not a zip archive
    Corrupt,           // a damaged archive, entry or XML document
    TooLarge,          // inflated data past the limit (a zip bomb), or an oversized file
    TooDeep,           // XML nested past the limit
    MissingEntry,      // no project, 0.xml or knx_master.xml in the archive
    PasswordRequired,  // protected, and no password was given
    WrongPassword      // protected, and the password does not open it
};

class ProjectError : public std::runtime_error
{
public:
    ProjectError(ProjectErrorKind kind, const std::string& message)
        : std::runtime_error(message), kind_(kind)
    {
    }

    ProjectErrorKind Kind() const noexcept { return kind_; }

private:
    ProjectErrorKind kind_;
};

// The messages callers show as they are; the tool's options are named because that is where
// the password comes from.
constexpr const char* kPasswordRequiredMessage =
    "project is password-protected: give --password-file or TAVKNX_PROJECT_PASSWORD";
constexpr const char* kWrongPasswordMessage = "wrong project password";
} // namespace TavProject
