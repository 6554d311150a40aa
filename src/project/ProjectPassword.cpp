#include <project/ProjectPassword.h>

#include <openssl/evp.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace TavProject
{
namespace
{
constexpr unsigned kFirstAesSchema = 21;
constexpr int kIterations = 65536;
constexpr std::size_t kKeyBytes = 32;
const char kSalt[] = "21.project.ets.knx.org";

// One code point from UTF-8 at `i`, advancing it; U+FFFD for anything malformed.
std::uint32_t NextCodePoint(const std::string& text, std::size_t& i)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(i++);
    if (lead < 0x80)
        return lead;
    std::size_t extra = 0;
    std::uint32_t cp = 0;
    std::uint32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) { extra = 1; cp = lead & 0x1Fu; minimum = 0x80; }
    else if ((lead & 0xF0) == 0xE0) { extra = 2; cp = lead & 0x0Fu; minimum = 0x800; }
    else if ((lead & 0xF8) == 0xF0) { extra = 3; cp = lead & 0x07u; minimum = 0x10000; }
    else return 0xFFFD;
    for (std::size_t k = 0; k < extra; ++k)
    {
        if (i >= text.size() || (byte(i) & 0xC0) != 0x80)
            return 0xFFFD;
        cp = cp << 6 | (byte(i++) & 0x3Fu);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0xFFFD;
    return cp;
}

std::vector<unsigned char> Utf16Le(const std::string& text)
{
    std::vector<unsigned char> out;
    out.reserve(text.size() * 2);
    const auto unit = [&](std::uint32_t u) {
        out.push_back(static_cast<unsigned char>(u & 0xFF));
        out.push_back(static_cast<unsigned char>(u >> 8 & 0xFF));
    };
    for (std::size_t i = 0; i < text.size();)
    {
        const std::uint32_t cp = NextCodePoint(text, i);
        if (cp >= 0x10000)
        {
            unit(0xD800 + ((cp - 0x10000) >> 10));
            unit(0xDC00 + ((cp - 0x10000) & 0x3FF));
        }
        else
        {
            unit(cp);
        }
    }
    return out;
}
} // namespace

std::string DeriveEts6ZipPassword(const std::string& password)
{
    const std::vector<unsigned char> utf16 = Utf16Le(password);
    unsigned char key[kKeyBytes];
    // An empty password still derives a key; OpenSSL wants a valid pointer for it.
    const unsigned char empty = 0;
    if (PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(utf16.empty() ? &empty : utf16.data()),
            static_cast<int>(utf16.size()), reinterpret_cast<const unsigned char*>(kSalt),
            static_cast<int>(sizeof kSalt - 1), kIterations, EVP_sha256(), static_cast<int>(kKeyBytes),
            key) != 1)
    {
        throw std::runtime_error("PBKDF2 failed");
    }
    unsigned char encoded[4 * ((kKeyBytes + 2) / 3) + 1];
    const int length = EVP_EncodeBlock(encoded, key, static_cast<int>(kKeyBytes));
    return std::string(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
}

std::string ZipPasswordFor(const std::string& password, unsigned schemaVersion)
{
    return schemaVersion < kFirstAesSchema ? password : DeriveEts6ZipPassword(password);
}
} // namespace TavProject
