#include <platform/BinaryData.h>

#include <platform/GroupValue.h>

#include <limits>
#include <sstream>
#include <stdexcept>

namespace KnxStack
{
BinaryData::BinaryData(const unsigned char* bytes, unsigned int length)
    : bytes_(bytes, bytes + length)
{
}

void BinaryData::Resize(unsigned int length) { bytes_.resize(length, 0); }

void BinaryData::AssignResized(const unsigned char* bytes, unsigned int count) { bytes_.assign(bytes, bytes + count); }

void BinaryData::Require(const char* accessor, unsigned int offset, unsigned int count) const
{
    // 64-bit sum: an offset near the top of the range must not wrap around and pass.
    const std::uint64_t needed = std::uint64_t{offset} + count;
    if (needed > bytes_.size())
    {
        std::ostringstream text;
        text << accessor << ": needs " << needed << " bytes, has " << bytes_.size();
        throw GroupValueException(text.str());
    }
}

std::uint8_t BinaryData::GetUInt8Value(unsigned int index) const
{
    Require("GetUInt8Value", index, 1);
    return bytes_[index];
}

void BinaryData::SetUInt8Value(unsigned int index, std::uint8_t value)
{
    if (index >= bytes_.size())
    {
        // index + 1 would wrap to 0 where size_t is 32 bits.
        if (index == std::numeric_limits<unsigned int>::max())
        {
            throw std::length_error("SetUInt8Value: index too large");
        }
        bytes_.resize(std::size_t{index} + 1, 0);
    }
    bytes_[index] = value;
}

std::uint32_t BinaryData::GetUInt24Value(unsigned int offset) const
{
    Require("GetUInt24Value", offset, 3);
    return (std::uint32_t{bytes_[offset]} << 16) | (std::uint32_t{bytes_[offset + 1]} << 8) |
           std::uint32_t{bytes_[offset + 2]};
}

std::uint32_t BinaryData::GetUInt32Value(unsigned int offset) const
{
    Require("GetUInt32Value", offset, 4);
    return (std::uint32_t{bytes_[offset]} << 24) | (std::uint32_t{bytes_[offset + 1]} << 16) |
           (std::uint32_t{bytes_[offset + 2]} << 8) | std::uint32_t{bytes_[offset + 3]};
}

std::string BinaryData::ToString() const
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes_.size() * 3);
    for (std::size_t i = 0; i < bytes_.size(); ++i)
    {
        if (i != 0)
        {
            text += ' ';
        }
        text += digits[bytes_[i] >> 4];
        text += digits[bytes_[i] & 0x0F];
    }
    return text;
}
} // namespace KnxStack
