#pragma once
// Type codes and sub-types of the controller's internal value. The numbers are exchanged
// with other programs through serialised values and must never change.
#include <cstdint>

enum OkaValueType : std::int32_t
{
    // 0 has no name: a value that is not valid (KNX "invalid" encodings).
    ivtEmpty = 1,
    ivtBool = 2,
    ivtFloat = 3,
    ivtInteger = 4,
    // 5 has no name.
    ivtByte = 6,
    ivtWord = 7,
    ivtDWord = 8,
    // 9 has no name (40-bit data, default DPT 218.0).
    ivtString = 10,
    ivtDate = 11,
    ivtTime = 12,
    ivtDateTime = 13,
    // 14 has no name (integer family, default DPT 13.100).
    ivtDayTime = 15,
    // Further unnamed codes: 20 (word family), 102, 104, 105, 201 (date/time family),
    // 1005, 1036, 1037, 1039 (float family), 1021 (byte family).
};

namespace OkaDP
{
enum OkaValueSubType : std::int32_t
{
    istGeneric = 0,
    istDefaultValue = 2,        // carried by the object model's default values
    istSignedRelative = 9,      // DPT 6 main type
    istSignedCount = 12,        // DPT 8 main type
    istSwitch = 2001,           // DPT 1 main type
    istStatusWithMode = 3001,   // DPT 6.020
    istStepControl = 3002,      // DPT 3
    istPhysicalQuantity = 3003, // DPT 9.001 .. 9.028
    istSceneNumber = 4001,      // DPT 17, 18
    istAsciiText = 8001,        // DPT 4.x, 4.1, 16.x
    istLatin1Text = 8002,       // DPT 4.2, 16.1
};

// Display name of a sub-type; "Generic" for 0, "Unknown" for numbers without a name.
const char* GetNameFromValueSubType(OkaValueSubType subType);
} // namespace OkaDP
