// Test helper: sends group APDUs through knxd as fast as the daemon takes them, so the
// monitor's tests can send what the daemon's own tools cannot (a burst of thousands, or
// APDUs no well-behaved device sends).
// Usage: ApduSender URL ROUNDS GA HEX [GA HEX ...]   (HEX may be empty: "")
#include <eibclient.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{
struct Telegram
{
    eibaddr_t groupAddress;
    std::vector<std::uint8_t> apdu;
};

bool ParseGroupAddress(const char* text, eibaddr_t& address)
{
    unsigned main = 0, middle = 0, sub = 0;
    char end = 0;
    if (std::sscanf(text, "%u/%u/%u%c", &main, &middle, &sub, &end) != 3 || main > 31 || middle > 7 || sub > 255)
    {
        return false;
    }
    address = static_cast<eibaddr_t>(main << 11 | middle << 8 | sub);
    return true;
}

bool ParseHex(const std::string& text, std::vector<std::uint8_t>& bytes)
{
    if (text.size() % 2 != 0)
    {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); i += 2)
    {
        char* end = nullptr;
        const std::string pair = text.substr(i, 2);
        const unsigned long byte = std::strtoul(pair.c_str(), &end, 16);
        if (*end != '\0')
        {
            return false;
        }
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 5 || argc % 2 != 1)
    {
        std::fprintf(stderr, "usage: ApduSender URL ROUNDS GA HEX [GA HEX ...]\n");
        return 2;
    }
    const long rounds = std::strtol(argv[2], nullptr, 10);
    std::vector<Telegram> telegrams;
    for (int i = 3; i + 1 < argc; i += 2)
    {
        Telegram telegram{};
        if (!ParseGroupAddress(argv[i], telegram.groupAddress) || !ParseHex(argv[i + 1], telegram.apdu))
        {
            std::fprintf(stderr, "ApduSender: bad GA or HEX: %s %s\n", argv[i], argv[i + 1]);
            return 2;
        }
        telegrams.push_back(telegram);
    }
    EIBConnection* connection = EIBSocketURL(argv[1]);
    if (connection == nullptr || EIBOpen_GroupSocket(connection, 1) == -1)
    {
        std::perror("ApduSender: cannot open the group socket");
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    long sent = 0;
    for (long round = 0; round < rounds; ++round)
    {
        for (const Telegram& telegram : telegrams)
        {
            if (EIBSendGroup(connection, telegram.groupAddress, static_cast<int>(telegram.apdu.size()),
                             telegram.apdu.data()) == -1)
            {
                std::perror("ApduSender: send failed");
                EIBClose(connection);
                return 1;
            }
            ++sent;
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EIBClose_sync(connection);
    std::printf("sent %ld telegrams in %.3f s\n", sent, seconds);
    return 0;
}
