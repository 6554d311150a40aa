#pragma once
// Per DPT main type: the object model's value type, sub-type and default value.
#include <platform/OkaValue.h>
#include <platform/OkaValueType.h>

#include <boost/optional.hpp>
#include <boost/unordered_map.hpp>

#include <cstdint>
#include <functional>

namespace Okaro
{
// Makes the default value of a main type; it is handed the row's value type.
using DefaultValueFactory = std::function<OKAVALUE(OkaValueType)>;

struct MainTypeInfo
{
    OkaValueType ivt;
    OkaDP::OkaValueSubType ist;
    DefaultValueFactory defaultValue;
};

class MainTypeInfoTable
{
public:
    // DPT 6.020 (status with mode) has a default value of its own instead of its row's.
    static constexpr std::uint32_t kStatusWithModeDpt = 0x60014;

    MainTypeInfoTable() = default;  // empty

    // The library's table with a row for every main type the object model knows. Built on
    // first use and touched by the library's static initialiser, so it is ready once the
    // library is loaded and also safe to use from another static initialiser.
    static const MainTypeInfoTable& Instance();

    // Adds or replaces the row of mainType.
    void Add(std::uint32_t mainType, MainTypeInfo info);

    // The row of mainType, nullptr when there is none.
    const MainTypeInfo* Find(std::uint32_t mainType) const;
    std::size_t Size() const { return rows_.size(); }

    // The default value for a packed DPT (main << 16 | sub): empty without a row for the
    // main type; DPT 6.020 gets its own value without calling the factory; otherwise the
    // row's factory is called with the row's ivt (an empty factory throws
    // std::bad_function_call).
    boost::optional<OKAVALUE> DefaultValueForDpt(std::uint32_t dpt) const;

private:
    // The hash of an unsigned key is the key itself.
    boost::unordered_map<std::uint32_t, MainTypeInfo> rows_;
};
} // namespace Okaro
