#pragma once
// The converter front for callers that hold internal values in their serialised text form:
// text is deserialised into an OKAVALUE before conversion to KNX, and the value read from KNX
// is serialised back into text. Every check, default and message is KnxValueConverter's.
#include <TavObjectModel/KnxValueConverter.h>

#include <string>

namespace Okaro
{
class TavKnxValueConverter : public KnxValueConverter
{
public:
    TavKnxValueConverter() = default;
    ~TavKnxValueConverter() override = default;

    bool Init();

    bool ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& groupValue);
    bool FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& groupValue, OKAVALUE& value);

    // Text that cannot be read leaves an empty value (type ivtEmpty), which the type check
    // then refuses. The text ends at its first zero byte.
    bool ToKnxValue(const KNXDPT& dpt, const std::string& text, KnxStack::GroupValue& groupValue);
    // The DPT is chosen from the value's type, else from the bit size (its low 8 bits only).
    bool ToKnxValue(const std::string& text, unsigned long bitSize, KnxStack::GroupValue& groupValue);
    // The DPT is the default for the group value's defined size (16 bits always read as a
    // 16-bit float). `text` is written only on success; `internalForm` selects the value
    // model's internal text form.
    bool FromKnxValue(const KnxStack::GroupValue& groupValue, std::string& text, bool internalForm);
};
} // namespace Okaro
