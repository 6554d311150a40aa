#include "cli/ProjectOptions.h"

#include "knx/TextError.h"

#include <project/ProjectError.h>
#include <project/ProjectReader.h>

#include <boost/program_options.hpp>

#include <cstdlib>
#include <fstream>

namespace TavKnx
{
namespace
{
// A password file is a line of text; anything longer is a mistake (a project given by accident).
constexpr std::size_t kMaxPasswordFileBytes = 64 * 1024;
} // namespace

void AddProjectPasswordOption(boost::program_options::options_description& options)
{
    options.add_options()("password-file", boost::program_options::value<std::string>()->value_name("FILE"),
                          "the ETS project's password: the first line of FILE (else $TAVKNX_PROJECT_PASSWORD)");
}

std::string ProjectPassword(const Invocation& invocation)
{
    if (invocation.options.count("password-file"))
    {
        const std::string path = invocation.options["password-file"].as<std::string>();
        std::ifstream file(path, std::ios::binary);
        std::string password(kMaxPasswordFileBytes + 1, '\0');
        if (file)
        {
            file.read(&password[0], static_cast<std::streamsize>(password.size()));
        }
        if (!file && !file.eof())
        {
            throw UsageError("--password-file: cannot read " + Quote(path));
        }
        password.resize(static_cast<std::size_t>(file.gcount()));
        if (password.size() > kMaxPasswordFileBytes)
        {
            throw UsageError("--password-file: " + Quote(path) + " is too large for a password file");
        }
        // The first line, without its end: editors and `echo` add one.
        password = password.substr(0, password.find('\n'));
        if (!password.empty() && password.back() == '\r')
        {
            password.pop_back();
        }
        return password;
    }
    const char* variable = std::getenv(kProjectPasswordVariable);
    return variable == nullptr ? std::string() : std::string(variable);
}

TavProject::Project ReadProject(const Invocation& invocation, const std::string& path, const std::string& what)
{
    TavProject::ReadOptions options;
    options.password = ProjectPassword(invocation);
    try
    {
        return TavProject::ReadProjectFile(path, options);
    }
    catch (const TavProject::ProjectError& error)
    {
        throw Refusal(what + error.what());
    }
}
} // namespace TavKnx
