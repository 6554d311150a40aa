#include <platform/Utf8Sequence.h>

#include <utf8cpp/utf8.h>

namespace Okaro
{
namespace
{
Utf8Fault ToFault(utf8::internal::utf_error error)
{
    switch (error)
    {
    case utf8::internal::UTF8_OK: return Utf8Fault::None;
    case utf8::internal::NOT_ENOUGH_ROOM: return Utf8Fault::NotEnoughRoom;
    case utf8::internal::INVALID_LEAD: return Utf8Fault::InvalidLead;
    case utf8::internal::INCOMPLETE_SEQUENCE: return Utf8Fault::Incomplete;
    case utf8::internal::OVERLONG_SEQUENCE: return Utf8Fault::Overlong;
    case utf8::internal::INVALID_CODE_POINT: return Utf8Fault::InvalidCodePoint;
    }
    return Utf8Fault::InvalidLead;
}

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u; }
} // namespace

Utf8Sequence ReadUtf8Sequence(const char* begin, const char* end)
{
    const char* next = begin;
    utf8::uint32_t codePoint = 0;
    const Utf8Fault fault = ToFault(utf8::internal::validate_next(next, end, codePoint));
    if (fault == Utf8Fault::None)
    {
        return {codePoint, static_cast<std::size_t>(next - begin), fault};
    }
    if (fault == Utf8Fault::InvalidLead)
    {
        return {0, 1, fault};
    }
    next = begin + 1;
    while (next != end && IsContinuation(*next))
    {
        ++next;
    }
    return {0, static_cast<std::size_t>(next - begin), fault};
}
} // namespace Okaro
