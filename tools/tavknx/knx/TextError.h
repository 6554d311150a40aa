#pragma once
// Text from outside that the KNX pieces refuse: a DPT, hex digits, a number, a telegram file
// line. The message names what was read and what was expected; the command line shows it as
// a usage error.
#include <stdexcept>
#include <string>

namespace TavKnx
{
class TextError : public std::runtime_error
{
public:
    explicit TextError(const std::string& message) : std::runtime_error(message) {}
};

// Text from outside for a message: in single quotes, cut to 40 characters (then "..."),
// control bytes shown as '?', so that a huge or binary argument gives a readable message.
std::string Quote(const std::string& text);
} // namespace TavKnx
