#pragma once
// encode and send: tell the user when the switch-driven codec put another value on the bus
// than the one given (clamped to the DPT's range, or DPT 9's invalid code): a WARN on stderr
// and "clamped":true in JSON; with --strict the value is refused instead.
#include "cli/CommandLine.h"

#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <boost/program_options/options_description.hpp>

namespace TavKnx
{
extern const char* const kStrictOptionHelp;
void AddStrictOption(boost::program_options::options_description& options);

enum class CodecVerdict
{
    Unchanged,  // the bytes read back as the value given
    Clamped,    // changed, warned about: go on, JSON says "clamped":true
    Refused,    // changed and --strict: the refusal is printed, exit 1
};

// `command` names the tool's command in the messages ("encode").
CodecVerdict CheckCodec(const Invocation& invocation, const char* command, const KNXDPT& dpt, const OKAVALUE& value,
                        const KnxStack::GroupValue& written);
} // namespace TavKnx
