#include <platform/OkaValue.h>
#include <platform/OkaValueFamily.h>

#include <cstdint>

namespace
{
struct ValueTypeInfo
{
    std::int32_t type;
    const char* name;
    OkaValueFamily family;
};

// Every type the value model knows; a number not listed is shown as "Empty" and its
// payload is kept as raw bytes.
const ValueTypeInfo kValueTypes[] = {
    {0, "Invalid", OkaValueFamily::Raw},
    {1, "Empty", OkaValueFamily::Empty},
    {2, "Bool", OkaValueFamily::Bool},
    {3, "Float", OkaValueFamily::Float},
    {4, "Integer", OkaValueFamily::Integer},
    {5, "Char", OkaValueFamily::Raw},
    {6, "Byte", OkaValueFamily::Byte},
    {7, "Word", OkaValueFamily::Word},
    {8, "DWord", OkaValueFamily::DWord},
    {9, "Data40", OkaValueFamily::Raw},
    {10, "String", OkaValueFamily::String},
    {11, "Date", OkaValueFamily::Time},
    {12, "Time", OkaValueFamily::Time},
    {13, "DateTime", OkaValueFamily::Time},
    {14, "ScaledInteger", OkaValueFamily::Integer},
    {15, "DayTime", OkaValueFamily::Time},
    {20, "Enumeration", OkaValueFamily::Word},
    {102, "TimeStamp", OkaValueFamily::Time},
    {104, "TimeSpan", OkaValueFamily::Time},
    {105, "DateSpan", OkaValueFamily::Time},
    {201, "DateTimeStamp", OkaValueFamily::Time},
    {1005, "Percent", OkaValueFamily::Float},
    {1021, "Counter8", OkaValueFamily::Byte},
    {1036, "Percent8", OkaValueFamily::Float},
    {1037, "DimmingStep", OkaValueFamily::Float},
    {1039, "Temperature", OkaValueFamily::Float},
};

const ValueTypeInfo* FindValueType(OkaValueType type)
{
    for (const ValueTypeInfo& info : kValueTypes)
    {
        if (info.type == static_cast<std::int32_t>(type))
        {
            return &info;
        }
    }
    return nullptr;
}

struct SubTypeName
{
    std::int32_t subType;
    const char* name;
};

const SubTypeName kSubTypeNames[] = {
    {OkaDP::istGeneric, "Generic"},
    {OkaDP::istDefaultValue, "Default"},
    {OkaDP::istSignedRelative, "SignedRelative"},
    {OkaDP::istSignedCount, "SignedCount"},
    {OkaDP::istSwitch, "Switch"},
    {OkaDP::istStatusWithMode, "StatusWithMode"},
    {OkaDP::istStepControl, "StepControl"},
    {OkaDP::istPhysicalQuantity, "PhysicalQuantity"},
    {OkaDP::istSceneNumber, "SceneNumber"},
    {OkaDP::istAsciiText, "AsciiText"},
    {OkaDP::istLatin1Text, "Latin1Text"},
};
} // namespace

const char* OKAVALUE::GetNameFromValueType(OkaValueType type)
{
    const ValueTypeInfo* info = FindValueType(type);
    return info != nullptr ? info->name : "Empty";
}

OkaValueFamily GetValueFamily(OkaValueType type)
{
    const ValueTypeInfo* info = FindValueType(type);
    return info != nullptr ? info->family : OkaValueFamily::Raw;
}

const char* OkaDP::GetNameFromValueSubType(OkaValueSubType subType)
{
    for (const SubTypeName& entry : kSubTypeNames)
    {
        if (entry.subType == static_cast<std::int32_t>(subType))
        {
            return entry.name;
        }
    }
    return "Unknown";
}
