#include <TavObjectModel/KnxLdsMapping.h>

#include <TavObjectModel/MainTypeInfoTable.h>
#include <platform/OkaString.h>
#include <platform/OkaValue.h>

namespace Okaro
{
namespace
{
// Object-model ids fit 32 bits; doing all arithmetic in this type keeps a 64-bit host and
// the 32-bit controller (where unsigned long has 32 bits) in step, wrap-arounds included.
using Id = std::uint32_t;

constexpr Id kDeviceId = 1000;
constexpr Id kLogicalDeviceStride = 100000;
constexpr Id kDeviceChannelOffset = 10;
constexpr Id kAppControlChannelOffset = 20;
constexpr Id kAppControlStateOffset = kAppControlChannelOffset + 1;
constexpr Id kAppControlEventOffset = kAppControlChannelOffset + 2;
constexpr Id kAppControlAliveOffset = kAppControlChannelOffset + 3;
constexpr Id kAppControlAppDebugOffset = kAppControlChannelOffset + 4;

constexpr Id kCoStride = 100;
constexpr Id kFirstCoOffset = kCoStride;  // CO 1
constexpr unsigned kMaxCo = 520;
constexpr Id kLastCoOffset = kCoStride * kMaxCo;

constexpr Id kParameterBase = 60000;
constexpr Id kParameterTypeStride = 1000;
constexpr Id kParameterStride = 10;
constexpr unsigned kMaxParameter = 50;
constexpr Id kMaxParameterType = 2;

constexpr Id kValueOffset = 1;  // a channel's value follows its channel id

constexpr Id ToId(unsigned long value) { return static_cast<Id>(value); }

Id LogicalDeviceBase(const LogicalDeviceId& ld) { return static_cast<Id>(ld.Get()) * kLogicalDeviceStride; }

Id AppControlId(const LogicalDeviceId& ld, Id offset) { return LogicalDeviceBase(ld) + offset; }
} // namespace

unsigned long KnxLdsMapping::GetDeviceObjModelId() { return kDeviceId; }

unsigned long KnxLdsMapping::GetKnxDeviceObjModelId() { return kDeviceId; }

unsigned long KnxLdsMapping::GetLogicalKnxDeviceObjModelId(const LogicalDeviceId& ld) { return LogicalDeviceBase(ld); }

unsigned long KnxLdsMapping::GetLdsKnxDeviceChannelObjModelId(const LogicalDeviceId& ld)
{
    return LogicalDeviceBase(ld) + kDeviceChannelOffset;
}

unsigned long KnxLdsMapping::GetAppHostAppControlChannelObjModelId(const LogicalDeviceId& ld)
{
    return AppControlId(ld, kAppControlChannelOffset);
}

unsigned long KnxLdsMapping::GetAppHostAppControlStateObjModelId(const LogicalDeviceId& ld)
{
    return AppControlId(ld, kAppControlStateOffset);
}

unsigned long KnxLdsMapping::GetAppHostAppControlEventObjModelId(const LogicalDeviceId& ld)
{
    return AppControlId(ld, kAppControlEventOffset);
}

unsigned long KnxLdsMapping::GetAppHostAppControlAliveObjModelId(const LogicalDeviceId& ld)
{
    return AppControlId(ld, kAppControlAliveOffset);
}

unsigned long KnxLdsMapping::GetAppHostAppControlAppDebugObjModelId(const LogicalDeviceId& ld)
{
    return AppControlId(ld, kAppControlAppDebugOffset);
}

boost::optional<unsigned long> KnxLdsMapping::GetCoChannelObjModelId(unsigned short co, const LogicalDeviceId& ld)
{
    if (co > kMaxCo)
    {
        return boost::none;
    }
    return static_cast<unsigned long>(LogicalDeviceBase(ld) + kCoStride * Id{co});
}

boost::optional<unsigned long> KnxLdsMapping::GetCoValueObjModelId(unsigned long channelId)
{
    const Id channel = ToId(channelId);
    if (!IsCoChannel(channel))
    {
        return boost::none;
    }
    return static_cast<unsigned long>(channel + kValueOffset);
}

boost::optional<unsigned long> KnxLdsMapping::GetCoValueObjModelId(unsigned short co, const LogicalDeviceId& ld)
{
    const boost::optional<unsigned long> channel = GetCoChannelObjModelId(co, ld);
    if (!channel)
    {
        return boost::none;
    }
    return GetCoValueObjModelId(*channel);
}

boost::optional<unsigned long> KnxLdsMapping::GetParameterChannelObjModelId(unsigned short n,
                                                                            const LogicalDeviceId& ld,
                                                                            ParameterType t)
{
    if (n > kMaxParameter)
    {
        return boost::none;
    }
    return static_cast<unsigned long>(LogicalDeviceBase(ld) + kParameterBase +
                                      kParameterTypeStride * static_cast<Id>(t) + kParameterStride * Id{n});
}

boost::optional<unsigned long> KnxLdsMapping::GetParameterValueObjModelId(unsigned long channelId)
{
    const Id channel = ToId(channelId);
    if (!IsParameterChannel(channel))
    {
        return boost::none;
    }
    return static_cast<unsigned long>(channel + kValueOffset);
}

boost::optional<unsigned long> KnxLdsMapping::GetParameterValueObjModelId(unsigned short n,
                                                                          const LogicalDeviceId& ld,
                                                                          ParameterType t)
{
    const boost::optional<unsigned long> channel = GetParameterChannelObjModelId(n, ld, t);
    if (!channel)
    {
        return boost::none;
    }
    // No channel check here: n 0 gives the value id of a channel that IsParameterChannel refuses.
    return static_cast<unsigned long>(ToId(*channel) + kValueOffset);
}

boost::optional<unsigned long> KnxLdsMapping::GetIpParameterValueObjModelId(unsigned short n,
                                                                            const LogicalDeviceId& ld)
{
    return GetParameterValueObjModelId(n, ld, ptIpParameter);
}

boost::optional<unsigned long> KnxLdsMapping::GetNumberParameterValueObjModelId(unsigned short n,
                                                                                const LogicalDeviceId& ld)
{
    return GetParameterValueObjModelId(n, ld, ptNumberParameter);
}

boost::optional<unsigned long> KnxLdsMapping::GetTextParameterValueObjModelId(unsigned short n,
                                                                              const LogicalDeviceId& ld)
{
    return GetParameterValueObjModelId(n, ld, ptTextParameter);
}

bool KnxLdsMapping::IsCoChannel(unsigned long id)
{
    const Id value = ToId(id);
    if (value < kLogicalDeviceStride)
    {
        return false;
    }
    // One unsigned comparison refuses both r < 100 (wraps to a huge number) and r > 52000.
    const Id offsetFromFirst = value % kLogicalDeviceStride - kFirstCoOffset;
    if (offsetFromFirst > kLastCoOffset - kFirstCoOffset)
    {
        return false;
    }
    return value % kCoStride == 0;
}

bool KnxLdsMapping::IsCoValue(unsigned long id)
{
    const Id value = ToId(id);
    if (value == 0)
    {
        return false;
    }
    return IsCoChannel(value - kValueOffset);
}

bool KnxLdsMapping::IsParameterChannel(unsigned long id)
{
    const Id value = ToId(id);
    const Id r = value % kLogicalDeviceStride;
    const Id s = r % kParameterBase;
    // Unsigned on purpose: s < 10 wraps to a huge type number, refused with the other bad types.
    const Id t = (s - kParameterStride) / kParameterTypeStride;
    if (value < kLogicalDeviceStride || s < kParameterStride || t > kMaxParameterType)
    {
        return false;
    }
    const Id firstOfType = kParameterBase + kParameterTypeStride * t + kParameterStride;
    const Id lastOfType = kParameterBase + kParameterTypeStride * t + kParameterStride * kMaxParameter;
    if (r < firstOfType || r > lastOfType)
    {
        return false;
    }
    return value % kParameterStride == 0;
}

bool KnxLdsMapping::IsAppHostAppControlState(unsigned long id, const LogicalDeviceId& ld)
{
    return ToId(id) == AppControlId(ld, kAppControlStateOffset);
}

bool KnxLdsMapping::IsAppHostAppControlEvent(unsigned long id, const LogicalDeviceId& ld)
{
    return ToId(id) == AppControlId(ld, kAppControlEventOffset);
}

bool KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(unsigned long id, const LogicalDeviceId& ld)
{
    return ToId(id) == AppControlId(ld, kAppControlAliveOffset);
}

bool KnxLdsMapping::IsAppHostAppControlAppDebug(unsigned long id, const LogicalDeviceId& ld)
{
    return ToId(id) == AppControlId(ld, kAppControlAppDebugOffset);
}

boost::optional<unsigned short> KnxLdsMapping::GetCoNumberFromObjModelId(unsigned long id, const LogicalDeviceId& ld)
{
    const Id value = ToId(id);
    if (value % kCoStride != kValueOffset || !IsCoChannel(value - value % kCoStride))
    {
        return boost::none;
    }
    // Modulo the given ld, not the id's own device: kept as callers know it.
    return static_cast<unsigned short>(value % LogicalDeviceBase(ld) / kCoStride);
}

boost::optional<LogicalDeviceId> KnxLdsMapping::GetLogicalDeviceIdFromObject(unsigned long id)
{
    const Id device = ToId(id) / kLogicalDeviceStride;
    if (device < static_cast<Id>(LogicalDeviceId::Minimum()) || device > static_cast<Id>(LogicalDeviceId::Maximum()))
    {
        return boost::none;
    }
    return LogicalDeviceId(static_cast<int>(device));
}

std::string KnxLdsMapping::GetIvtFromMainType(unsigned long mainType)
{
    const MainTypeInfo* info = MainTypeInfoTable::Instance().Find(ToId(mainType));
    return info == nullptr ? "Empty" : OKAVALUE::GetNameFromValueType(info->ivt);
}

std::string KnxLdsMapping::GetIstFromMainType(unsigned long mainType)
{
    const MainTypeInfo* info = MainTypeInfoTable::Instance().Find(ToId(mainType));
    return info == nullptr ? "Generic" : OkaDP::GetNameFromValueSubType(info->ist);
}

OkaValueType KnxLdsMapping::GetIvtFromDpt(unsigned int dpt)
{
    const MainTypeInfo* info = MainTypeInfoTable::Instance().Find(static_cast<std::uint32_t>(dpt) >> 16);
    return info == nullptr ? ivtEmpty : info->ivt;
}

boost::optional<std::string> KnxLdsMapping::GetDefaultValueFromDpt(unsigned long dpt, bool internalFormat)
{
    const boost::optional<OKAVALUE> value = MainTypeInfoTable::Instance().DefaultValueForDpt(ToId(dpt));
    if (!value)
    {
        return boost::none;
    }
    oka_string text;
    value->Serialize(text, internalFormat);
    return std::string(text.c_str(), text.length());
}
} // namespace Okaro
