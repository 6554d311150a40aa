#pragma once
// Pieces the device stack's worker units share: its logger, its errors, the value codec calls
// that never throw, and the texts it shows objects and values in.
#include <devicestack/KnxdDeviceStackClient.h>

#include <platform/GroupValue.h>

#include <boost/optional.hpp>
#include <log4cplus/logger.h>

#include <string>
#include <vector>

namespace Lumo
{
namespace detail
{
log4cplus::Logger KnxdLog();
// Code, kind, why; the message is "kind: why".
ResponseError StackError(KnxdDeviceStackClient::ErrorCode code, const std::string& what, const std::string& why);
// "CO 1".
std::string ObjectName(const DeviceObject& object);
// The group value's bytes as hex digits.
std::string ValueBytesHex(const KnxStack::GroupValue& value);
// Empty when the DPT has no reading for the bytes (or the calendar refuses them).
boost::optional<OKAVALUE> Decode(const KnxStack::GroupValue& value, const DeviceObject& object);
// Empty when the DPT cannot carry the value.
boost::optional<KnxStack::GroupValue> Encode(const OKAVALUE& value, const DeviceObject& object);
// The object in the objects-file form: "1;1/2/3;9.1;CRWTU;Name".
std::string ObjectLine(const DeviceObject& object);
} // namespace detail

// GetDeviceConfig's JSON: {"url":...,"connected":...,"objects":[{"co":1,"id":100101,...}]}.
std::string DeviceConfigJson(const std::string& url, bool connected, const std::vector<DeviceObject>& objects,
                             const std::vector<OKAVALUE>& values, bool internalFormat);
} // namespace Lumo
