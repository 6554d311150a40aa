// Where converter objects live: the heap for a plain Clone, the DPT value map's own storage
// for the clones it keeps; deleted through the virtual destructor either way.
#include "support/LogCapture.h"

#include <TavObjectModel/DptValueMap.h>
#include <TavObjectModel/KnxConverter.h>
#include <TavObjectModel/KnxValueConverter.h>
#include <TavObjectModel/detail/ConverterStorage.h>

#include <gtest/gtest.h>
#include <log4cplus/logger.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <set>
#include <thread>
#include <vector>

using namespace Okaro;

namespace
{
// Counts constructions and destructions; its members make its alignment the strictest one.
class CountedConverter : public KnxConverter
{
public:
    CountedConverter() { ++live; }
    CountedConverter(const CountedConverter& other) : KnxConverter(other), wide(other.wide) { ++live; }
    ~CountedConverter() override { --live; }

    bool ToKnxValue(const KNXDPT&, const OKAVALUE&, KnxStack::GroupValue&) const override { return true; }
    bool FromKnxValue(const KNXDPT&, const KnxStack::GroupValue&, OKAVALUE&) const override { return true; }
    CountedConverter* Clone() const override { return new CountedConverter(*this); }

    static int live;
    std::max_align_t wide{};
};

int CountedConverter::live = 0;

// Aligned beyond what new guarantees without being asked.
class alignas(4 * alignof(std::max_align_t)) OverAlignedConverter : public KnxConverter
{
public:
    bool ToKnxValue(const KNXDPT&, const OKAVALUE&, KnxStack::GroupValue&) const override { return true; }
    bool FromKnxValue(const KNXDPT&, const KnxStack::GroupValue&, OKAVALUE&) const override { return true; }
    OverAlignedConverter* Clone() const override { return new OverAlignedConverter(*this); }
};

bool IsAligned(const void* object, std::size_t alignment)
{
    return reinterpret_cast<std::uintptr_t>(object) % alignment == 0;
}
} // namespace

TEST(ConverterStorage, ClonesOutsideAPlacementComeFromTheHeapAndAreDeleted)
{
    const CountedConverter original;
    {
        const std::unique_ptr<KnxConverter> clone(original.Clone());
        EXPECT_EQ(CountedConverter::live, 2);
        EXPECT_TRUE(IsAligned(clone.get(), alignof(std::max_align_t)));
    }
    EXPECT_EQ(CountedConverter::live, 1);
}

TEST(ConverterStorage, ClonesInsideAPlacementAreStoredAlignedAndStillDestroyed)
{
    const CountedConverter original;
    detail::ConverterStorage storage;
    std::set<const KnxConverter*> clones;
    {
        const detail::ConverterPlacement placement(storage);
        // More than the first block holds, so that further blocks are taken.
        for (int i = 0; i < 1000; ++i)
        {
            KnxConverter* clone = original.Clone();
            EXPECT_TRUE(IsAligned(clone, alignof(std::max_align_t)));
            clones.insert(clone);
        }
    }
    EXPECT_EQ(clones.size(), 1000u);
    EXPECT_EQ(CountedConverter::live, 1001);
    for (const KnxConverter* clone : clones)
    {
        delete clone;
    }
    EXPECT_EQ(CountedConverter::live, 1);
}

TEST(ConverterStorage, PlacementsNestAndEndWithTheirScope)
{
    const CountedConverter original;
    detail::ConverterStorage outer;
    detail::ConverterStorage inner;
    std::unique_ptr<KnxConverter> afterwards;
    {
        const detail::ConverterPlacement outerPlacement(outer);
        {
            const detail::ConverterPlacement innerPlacement(inner);
            delete original.Clone();
        }
        delete original.Clone();
    }
    // A heap object again: unique_ptr frees it after both storages are gone (ASan checks).
    afterwards.reset(original.Clone());
    EXPECT_EQ(CountedConverter::live, 2);
}

TEST(ConverterStorage, PlacementIsPerThread)
{
    const CountedConverter original;
    detail::ConverterStorage storage;
    std::unique_ptr<KnxConverter> fromOtherThread;
    {
        const detail::ConverterPlacement placement(storage);
        // Another thread's clone is a heap object, which outlives the storage here.
        std::thread([&] { fromOtherThread.reset(original.Clone()); }).join();
    }
    EXPECT_EQ(CountedConverter::live, 2);
}

TEST(ConverterStorage, OverAlignedConvertersKeepTheirAlignment)
{
    const OverAlignedConverter original;
    detail::ConverterStorage storage;
    const detail::ConverterPlacement placement(storage);
    const std::unique_ptr<KnxConverter> clone(original.Clone());
    EXPECT_TRUE(IsAligned(clone.get(), alignof(OverAlignedConverter)));
}

TEST(ConverterStorage, PlacementNewStaysAvailable)
{
    alignas(CountedConverter) unsigned char buffer[sizeof(CountedConverter)];
    KnxConverter* placed = new (buffer) CountedConverter();
    EXPECT_EQ(static_cast<void*>(placed), static_cast<void*>(buffer));
    EXPECT_EQ(CountedConverter::live, 1);
    placed->~KnxConverter();
    EXPECT_EQ(CountedConverter::live, 0);
}

TEST(ConverterStorage, MapClonesLiveUntilTheirEntryGoesAndCopiesCloneAgain)
{
    const CountedConverter original;
    {
        DptValueMap map;
        ASSERT_TRUE(map.AddEntry(KNXDPT{8, 50, 1}, ivtByte, OkaDP::istGeneric, original));
        ASSERT_TRUE(map.AddEntry(KNXDPT{8, 50, 1}, ivtWord, OkaDP::istGeneric, original));  // refused, deleted
        EXPECT_EQ(CountedConverter::live, 2);
        const KnxConverter* stored = map.GetEntry(KNXDPT{8, 50, 1}).GetConverter();
        {
            const DptValueMap copy(map);
            EXPECT_EQ(CountedConverter::live, 3);
            EXPECT_NE(copy.GetEntry(KNXDPT{8, 50, 1}).GetConverter(), stored);
            DptValueMap assigned;
            assigned = copy;
            EXPECT_EQ(CountedConverter::live, 4);
        }
        EXPECT_EQ(CountedConverter::live, 2);
        map.Clear();
        EXPECT_EQ(CountedConverter::live, 1);
        ASSERT_TRUE(map.AddEntry(KNXDPT{8, 50, 2}, ivtByte, OkaDP::istGeneric, original));
        EXPECT_EQ(map.GetEntry(KNXDPT{8, 50, 2}).GetValueType(), ivtByte);
        EXPECT_EQ(CountedConverter::live, 2);
    }
    EXPECT_EQ(CountedConverter::live, 1);
}

TEST(ConverterStorage, EveryConstructedFrontOwnsDistinctConvertersOfItsOwn)
{
    std::set<const KnxConverter*> seen;
    for (int round = 0; round < 3; ++round)
    {
        const KnxValueConverter front;
        for (const auto& mainEntry : front.GetDptValueMap().GetEntries())
        {
            for (const auto& subEntry : mainEntry.second)
            {
                ASSERT_NE(subEntry.second.GetConverter(), nullptr);
                EXPECT_TRUE(seen.insert(subEntry.second.GetConverter()).second);
            }
        }
        if (round < 2)
        {
            seen.clear();
        }
    }
    EXPECT_EQ(seen.size(), 53u);
}

// The converters find their logger once, but read its level on every call: a level set on
// the logger counts from the very next conversion, up and down.
TEST(ConverterStorage, LevelsSetOnTheLoggerCountFromTheNextCall)
{
    KnxValueConverter front;
    const unsigned char bytes[] = {0x0C, 0x1A};
    const KnxStack::GroupValue telegram(KnxStack::BinaryData(bytes, 2), 16);
    OKAVALUE value;
    TavTest::LogCapture capture(log4cplus::INFO_LOG_LEVEL);
    log4cplus::Logger tav = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("Tav"));
    const log4cplus::LogLevel before = tav.getLogLevel();

    ASSERT_TRUE(front.FromKnxValue(KNXDPT{16, 9, 1}, telegram, value));
    EXPECT_TRUE(capture.Lines().empty());

    tav.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    ASSERT_TRUE(front.FromKnxValue(KNXDPT{16, 9, 1}, telegram, value));
    tav.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
    ASSERT_TRUE(front.FromKnxValue(KNXDPT{16, 9, 1}, telegram, value));
    tav.setLogLevel(before);

    EXPECT_EQ(capture.Lines(), std::vector<TavTest::LogLine>{
                                   TavTest::Trace("FromKnxValue - DPT is used. DPT = 9.1 grp.size=16 grp.val=0c 1a")});
}
