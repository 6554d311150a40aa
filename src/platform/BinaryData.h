#pragma once
// A growable byte buffer: the raw bytes of a KNX group value.
#include <cstdint>
#include <string>
#include <vector>

namespace KnxStack
{
class BinaryData
{
public:
    BinaryData() = default;
    BinaryData(const unsigned char* bytes, unsigned int length);
    virtual ~BinaryData() = default;
    BinaryData(const BinaryData&) = default;
    BinaryData& operator=(const BinaryData&) = default;

    unsigned int GetSize() const { return static_cast<unsigned int>(bytes_.size()); }
    const unsigned char* GetData() const { return bytes_.data(); }
    void Resize(unsigned int length);  // new bytes are zero
    // Replaces the bytes with `count` bytes from `bytes`, keeping the buffer where it suffices.
    // Inline for the same length, the case of a group value reused for sending: a setter's
    // few bytes are then stored without a call.
    void Assign(const unsigned char* bytes, unsigned int count)
    {
        if (count == bytes_.size())
        {
            unsigned char* data = bytes_.data();
            for (unsigned int i = 0; i < count; ++i)
            {
                data[i] = bytes[i];
            }
            return;
        }
        AssignResized(bytes, count);
    }

    // Reads throw GroupValueException past the end; SetUInt8Value grows the buffer.
    std::uint8_t GetUInt8Value(unsigned int index) const;
    void SetUInt8Value(unsigned int index, std::uint8_t value);
    std::uint32_t GetUInt24Value(unsigned int offset) const;  // most significant byte first
    std::uint32_t GetUInt32Value(unsigned int offset) const;  // most significant byte first

    // Lower-case hex, two digits a byte, separated by blanks ("0c 1a"); "" when empty.
    std::string ToString() const;

    bool operator==(const BinaryData& other) const { return bytes_ == other.bytes_; }
    bool operator!=(const BinaryData& other) const { return bytes_ != other.bytes_; }

private:
    void AssignResized(const unsigned char* bytes, unsigned int count);
    void Require(const char* accessor, unsigned int offset, unsigned int count) const;

    std::vector<unsigned char> bytes_;
};
} // namespace KnxStack
