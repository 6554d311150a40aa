#pragma once
// The value model's string: texts of up to three characters live in an inline buffer,
// longer ones on the heap. The characters are always zero-terminated.
#include <cstddef>

class oka_string
{
public:
    oka_string();
    explicit oka_string(const char* text);
    oka_string(const char* bytes, std::size_t length);
    oka_string(const oka_string& other);
    oka_string& operator=(const oka_string& other);
    virtual ~oka_string();

    void assign(const char* text);                      // up to the first zero byte
    void assign(const char* bytes, std::size_t length); // any bytes, zeros included
    void assign(char c);
    void append(char c);
    void clear();  // length 0, keeps the buffer
    void Free();   // releases a heap buffer and returns to the empty inline state

    const char* c_str() const { return data_; }
    std::size_t length() const { return length_; }
    std::size_t capacity() const { return capacity_; }
    bool IsInline() const { return data_ == inline_; }

private:
    void Reserve(std::size_t wanted);

    static constexpr std::size_t kInlineCapacity = 3;
    char inline_[kInlineCapacity + 1];
    char* data_;
    std::size_t capacity_;
    std::size_t length_;
};

bool operator==(const oka_string& a, const oka_string& b);
inline bool operator!=(const oka_string& a, const oka_string& b) { return !(a == b); }
