#pragma once
// Numbering of the KNX side of the controller's object model, and what the object model
// uses (value type, sub-type, default value) for each DPT main type.
//
// Every KNX id but the device's is ld * 100000 + r:
//   r 0              logical KNX device
//   r 10             device channel of the logical device
//   r 20 .. 24       app-host app control channel, state, event, alive, app debug
//   r 100 * n        CO channel n (1..520), + 1 its value
//   r 60000 + 1000 * t + 10 * n
//                    parameter channel n (1..50) of type t (0..2), + 1 its value
// Ids are computed in 32-bit unsigned arithmetic whatever the width of unsigned long, so a
// 64-bit host and the 32-bit controller agree; arguments are reduced to 32 bits on entry.
#include <TavObjectModel/BoundedInt.h>
#include <platform/OkaValueType.h>

#include <boost/optional.hpp>

#include <cstdint>
#include <string>

namespace Okaro
{
// The three kinds of parameter channel.
enum ParameterType : std::uint32_t
{
    ptIpParameter = 0,
    ptNumberParameter = 1,
    ptTextParameter = 2,
};

class KnxLdsMapping
{
public:
    KnxLdsMapping() = delete;

    // --- id makers
    static unsigned long GetDeviceObjModelId();     // 1000
    static unsigned long GetKnxDeviceObjModelId();  // 1000, the device's id
    static unsigned long GetLogicalKnxDeviceObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetLdsKnxDeviceChannelObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetAppHostAppControlChannelObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetAppHostAppControlStateObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetAppHostAppControlEventObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetAppHostAppControlAliveObjModelId(const LogicalDeviceId& ld);
    static unsigned long GetAppHostAppControlAppDebugObjModelId(const LogicalDeviceId& ld);

    // Empty when co > 520. co 0 gives the logical device's own id, which is no CO channel.
    static boost::optional<unsigned long> GetCoChannelObjModelId(unsigned short co, const LogicalDeviceId& ld);
    // Empty unless channelId is a CO channel.
    static boost::optional<unsigned long> GetCoValueObjModelId(unsigned long channelId);
    static boost::optional<unsigned long> GetCoValueObjModelId(unsigned short co, const LogicalDeviceId& ld);

    // Empty when n > 50; t is not range-checked. n 0 gives an id that is no parameter channel.
    static boost::optional<unsigned long> GetParameterChannelObjModelId(unsigned short n, const LogicalDeviceId& ld,
                                                                        ParameterType t);
    // Empty unless channelId is a parameter channel.
    static boost::optional<unsigned long> GetParameterValueObjModelId(unsigned long channelId);
    // Parameter channel id + 1; empty when n > 50.
    static boost::optional<unsigned long> GetParameterValueObjModelId(unsigned short n, const LogicalDeviceId& ld,
                                                                      ParameterType t);
    static boost::optional<unsigned long> GetIpParameterValueObjModelId(unsigned short n, const LogicalDeviceId& ld);
    static boost::optional<unsigned long> GetNumberParameterValueObjModelId(unsigned short n,
                                                                            const LogicalDeviceId& ld);
    static boost::optional<unsigned long> GetTextParameterValueObjModelId(unsigned short n, const LogicalDeviceId& ld);

    // --- predicates; the logical device part of the id is not checked
    static bool IsCoChannel(unsigned long id);
    static bool IsCoValue(unsigned long id);
    static bool IsParameterChannel(unsigned long id);
    static bool IsAppHostAppControlState(unsigned long id, const LogicalDeviceId& ld);
    static bool IsAppHostAppControlEvent(unsigned long id, const LogicalDeviceId& ld);
    static bool IsAppHostAppControlAliveHeartbeat(unsigned long id, const LogicalDeviceId& ld);
    static bool IsAppHostAppControlAppDebug(unsigned long id, const LogicalDeviceId& ld);

    // --- extractors
    // The CO number of a CO value id, taken modulo ld * 100000: callers pass the ld the id
    // belongs to (an id of device 1 read with ld 2 gives 1000 + n).
    static boost::optional<unsigned short> GetCoNumberFromObjModelId(unsigned long id, const LogicalDeviceId& ld);
    static boost::optional<LogicalDeviceId> GetLogicalDeviceIdFromObject(unsigned long id);

    // --- DPT main type lookups
    // Display name of the main type's value type; "Empty" without a row.
    static std::string GetIvtFromMainType(unsigned long mainType);
    // Display name of the main type's sub-type; "Generic" without a row.
    static std::string GetIstFromMainType(unsigned long mainType);
    // Value type for a packed DPT (main << 16 | sub); ivtEmpty without a row.
    static OkaValueType GetIvtFromDpt(unsigned int dpt);
    // Serialised default value for a packed DPT; empty without a row.
    static boost::optional<std::string> GetDefaultValueFromDpt(unsigned long dpt, bool internalFormat);
};
} // namespace Okaro
