#pragma once
// The payload of PREFIX/GA/set, turned into the group value the address's DPT takes. Three
// forms: a JSON value (21.5, true, "Hello", "2024-04-30"), a JSON object {"value": ...}, or the
// tool's TYPE:TEXT (float:21.5). A JSON value is read as the DPT's value type; the value is
// encoded by OkaValueToGroupValue, as the controller's applications encode it.
#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <stdexcept>
#include <string>

namespace TavKnx
{
// A payload that does not fit the DPT; the message says why.
class SetPayloadError : public std::runtime_error
{
public:
    explicit SetPayloadError(const std::string& message) : std::runtime_error(message) {}
};

// The value the payload names, of the DPT's value type for a JSON value. Throws SetPayloadError.
OKAVALUE ParseSetPayload(const std::string& payload, const KNXDPT& dpt);
// ParseSetPayload, then the encoder. Throws SetPayloadError, never anything else.
KnxStack::GroupValue EncodeSetPayload(const std::string& payload, const KNXDPT& dpt);
} // namespace TavKnx
