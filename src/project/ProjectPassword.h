#pragma once
// The zip password of a protected project's inner archive, from the password the user gives.
#include <string>

namespace TavProject
{
// From schema 21 on (ETS6) the inner archive's AES-256 entries are encrypted with
// base64(PBKDF2-HMAC-SHA256(password as UTF-16LE, "21.project.ets.knx.org", 65536, 32 bytes)).
// `password` is UTF-8; invalid sequences count as U+FFFD. Takes some tens of milliseconds.
std::string DeriveEts6ZipPassword(const std::string& password);

// The zip password for a project of `schemaVersion`: the password as given below 21, else the
// derived one.
std::string ZipPasswordFor(const std::string& password, unsigned schemaVersion);
} // namespace TavProject
