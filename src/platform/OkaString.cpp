#include <platform/OkaString.h>

#include <algorithm>
#include <cstring>

oka_string::oka_string() : inline_{}, data_(inline_), capacity_(kInlineCapacity), length_(0) {}

oka_string::oka_string(const char* text) : oka_string() { assign(text); }

oka_string::oka_string(const char* bytes, std::size_t length) : oka_string() { assign(bytes, length); }

oka_string::oka_string(const oka_string& other) : oka_string() { assign(other.data_, other.length_); }

oka_string& oka_string::operator=(const oka_string& other)
{
    if (this != &other)
    {
        assign(other.data_, other.length_);
    }
    return *this;
}

oka_string::~oka_string()
{
    if (!IsInline())
    {
        delete[] data_;
    }
}

void oka_string::Reserve(std::size_t wanted)
{
    if (wanted <= capacity_)
    {
        return;
    }
    // Doubling keeps a run of append() calls linear.
    const std::size_t newCapacity = std::max(wanted, capacity_ * 2);
    char* grown = new char[newCapacity + 1];
    std::memcpy(grown, data_, length_ + 1);
    if (!IsInline())
    {
        delete[] data_;
    }
    data_ = grown;
    capacity_ = newCapacity;
}

void oka_string::assign(const char* text)
{
    if (text == nullptr)
    {
        clear();
        return;
    }
    assign(text, std::strlen(text));
}

void oka_string::assign(const char* bytes, std::size_t length)
{
    // Bytes inside our own buffer never need a larger one, so Reserve cannot free them.
    Reserve(length);
    if (length > 0)
    {
        std::memmove(data_, bytes, length);
    }
    length_ = length;
    data_[length_] = '\0';
}

void oka_string::assign(char c) { assign(&c, 1); }

void oka_string::append(char c)
{
    Reserve(length_ + 1);
    data_[length_] = c;
    ++length_;
    data_[length_] = '\0';
}

void oka_string::clear()
{
    length_ = 0;
    data_[0] = '\0';
}

void oka_string::Free()
{
    if (!IsInline())
    {
        delete[] data_;
    }
    data_ = inline_;
    capacity_ = kInlineCapacity;
    length_ = 0;
    inline_[0] = '\0';
}

bool operator==(const oka_string& a, const oka_string& b)
{
    return a.length() == b.length() && std::memcmp(a.c_str(), b.c_str(), a.length()) == 0;
}
