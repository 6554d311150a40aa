#pragma once
// Internal to the value model: which member of the numeric union a type uses, shared by
// the text form, the byte codec and the comparison so that they agree on every type.
#include <platform/OkaValueType.h>

enum class OkaValueFamily
{
    Empty,   // no payload
    Bool,    // numeric.boolean
    Float,   // numeric.real
    Integer, // numeric.integer
    Byte,    // numeric.byte
    Word,    // numeric.word
    DWord,   // numeric.dword
    String,  // the text
    Time,    // numeric.time
    Raw,     // no known meaning: the union's bytes and the text as they are
};

OkaValueFamily GetValueFamily(OkaValueType type);
