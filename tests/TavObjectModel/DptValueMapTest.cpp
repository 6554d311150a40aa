#include "support/LogCapture.h"

#include <TavObjectModel/DptValueMap.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
// Counts its live instances so that ownership (clone on copy, delete on destruction) shows.
class TaggedConverter : public KnxConverter
{
public:
    explicit TaggedConverter(int tag) : tag_(tag) { ++live; }
    TaggedConverter(const TaggedConverter& other) : KnxConverter(other), tag_(other.tag_) { ++live; }
    ~TaggedConverter() override { --live; }

    bool ToKnxValue(const KNXDPT&, const OKAVALUE&, KnxStack::GroupValue&) const override { return true; }
    bool FromKnxValue(const KNXDPT&, const KnxStack::GroupValue&, OKAVALUE&) const override { return true; }
    TaggedConverter* Clone() const override { return new TaggedConverter(*this); }

    int Tag() const { return tag_; }

    static int live;

private:
    int tag_;
};

int TaggedConverter::live = 0;

int TagOf(const DptValueEntry& entry)
{
    const auto* converter = dynamic_cast<const TaggedConverter*>(entry.GetConverter());
    return converter != nullptr ? converter->Tag() : -1;
}

DptValueEntry MakeEntry(KNXDPT dpt, OkaValueType type, int tag)
{
    return DptValueEntry(dpt, type, OkaDP::istGeneric, new TaggedConverter(tag));
}

bool Add(DptValueMap& map, KNXDPT dpt, OkaValueType type, int tag)
{
    const TaggedConverter onTheStack(tag);
    return map.AddEntry(dpt, DptValueEntry(dpt, type, OkaDP::istGeneric, onTheStack.Clone()));
}

bool IsNoEntryRecord(const DptValueEntry& entry) { return &entry == &DptValueMap::GetNoEntryRecord(); }

class DptValueMapWithEntries : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // 9: wildcard and 9.1; 40: no wildcard, only 40.3.
        ASSERT_TRUE(Add(map, KNXDPT{16, 9, 0}, ivtFloat, 90));
        ASSERT_TRUE(Add(map, KNXDPT{16, 9, 1}, ivtFloat, 91));
        ASSERT_TRUE(Add(map, KNXDPT{8, 40, 3}, ivtByte, 403));
    }

    DptValueMap map;
};
} // namespace

TEST(DptValueEntry, CopyGetsItsOwnCloneOfTheConverter)
{
    const int before = TaggedConverter::live;
    {
        const DptValueEntry original = MakeEntry(KNXDPT{16, 9, 1}, ivtFloat, 7);
        const DptValueEntry copy(original);
        EXPECT_NE(copy.GetConverter(), original.GetConverter());
        EXPECT_EQ(TagOf(copy), 7);
        EXPECT_EQ(copy.GetDpt().size, 16);
        EXPECT_EQ(copy.GetDpt().main, 9);
        EXPECT_EQ(copy.GetDpt().sub, 1);
        EXPECT_EQ(copy.GetValueType(), ivtFloat);
        EXPECT_EQ(TaggedConverter::live, before + 2);
    }
    EXPECT_EQ(TaggedConverter::live, before);
}

TEST(DptValueEntry, AssignmentReplacesTheConverterWithAClone)
{
    const int before = TaggedConverter::live;
    {
        DptValueEntry target = MakeEntry(KNXDPT{1, 1, 0}, ivtBool, 1);
        const DptValueEntry source = MakeEntry(KNXDPT{8, 5, 0}, ivtByte, 5);
        target = source;
        EXPECT_EQ(TagOf(target), 5);
        EXPECT_NE(target.GetConverter(), source.GetConverter());
        EXPECT_EQ(target.GetValueType(), ivtByte);
        EXPECT_EQ(target.GetDpt().main, 5);
        const DptValueEntry& itself = target;  // self-assignment, through a reference
        target = itself;
        EXPECT_EQ(TagOf(target), 5);
        EXPECT_EQ(TaggedConverter::live, before + 2);
    }
    EXPECT_EQ(TaggedConverter::live, before);
}

TEST(DptValueEntry, EntryWithoutConverterCopiesAsNull)
{
    const DptValueEntry original(KNXDPT{8, 5, 0}, ivtByte, OkaDP::istGeneric, nullptr);
    const DptValueEntry copy(original);
    EXPECT_EQ(copy.GetConverter(), nullptr);
}

TEST_F(DptValueMapWithEntries, ExactSubNumberIsFound)
{
    LogCapture capture;
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 1})), 91);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DptValueMapWithEntries, MissingSubNumberFallsBackToTheWildcard)
{
    LogCapture capture;
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 9})), 90);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 0})), 90);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DptValueMapWithEntries, BitSizeOfTheQueryIsIgnored)
{
    const DptValueEntry& entry = map.GetEntry(KNXDPT{8, 9, 1});
    EXPECT_EQ(TagOf(entry), 91);
    EXPECT_EQ(entry.GetDpt().size, 16);
}

TEST_F(DptValueMapWithEntries, UnknownMainNumberGivesTheNoEntryRecord)
{
    LogCapture capture;
    const DptValueEntry& entry = map.GetEntry(KNXDPT{16, 22, 1});
    EXPECT_TRUE(IsNoEntryRecord(entry));
    EXPECT_EQ(entry.GetValueType(), ivtEmpty);
    const auto lines = capture.Lines();
    ASSERT_THAT(lines, ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1")));
    EXPECT_EQ(lines[0].file, "KnxValueConverter.cpp");
}

TEST_F(DptValueMapWithEntries, MissingWildcardAskedDirectlyNamesSubZero)
{
    LogCapture capture;
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 40, 0})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 40.0")));
}

TEST_F(DptValueMapWithEntries, MissingSubWithoutWildcardNamesTheMainNumberWithX)
{
    LogCapture capture;
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 40, 7})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 40.x")));
}

TEST_F(DptValueMapWithEntries, FirstRegistrationWinsAndTheRepeatStillSucceeds)
{
    LogCapture capture;
    EXPECT_TRUE(Add(map, KNXDPT{8, 9, 1}, ivtByte, 999));
    EXPECT_TRUE(Add(map, KNXDPT{8, 9, 1}, ivtByte, 998));
    const DptValueEntry& entry = map.GetEntry(KNXDPT{16, 9, 1});
    EXPECT_EQ(TagOf(entry), 91);
    EXPECT_EQ(entry.GetValueType(), ivtFloat);
    EXPECT_EQ(entry.GetDpt().size, 16);
    EXPECT_EQ(map.GetEntryCount(), 3u);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DptValueMapWithEntries, StoredEntriesOwnAClone)
{
    const int before = TaggedConverter::live;
    const TaggedConverter local(55);
    const DptValueEntry entry(KNXDPT{8, 50, 1}, ivtByte, OkaDP::istGeneric, local.Clone());
    ASSERT_TRUE(map.AddEntry(KNXDPT{8, 50, 1}, entry));
    EXPECT_EQ(TaggedConverter::live, before + 3);
    EXPECT_NE(map.GetEntry(KNXDPT{8, 50, 1}).GetConverter(), entry.GetConverter());
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 50, 1})), 55);
}

TEST_F(DptValueMapWithEntries, EntriesAreCountedPerMainNumber)
{
    EXPECT_EQ(map.GetEntryCount(), 3u);
    ASSERT_EQ(map.GetEntries().size(), 2u);
    EXPECT_EQ(map.GetEntries().at(9).size(), 2u);
    EXPECT_EQ(map.GetEntries().at(40).size(), 1u);
}

TEST_F(DptValueMapWithEntries, ClearDeletesEveryConverter)
{
    const int before = TaggedConverter::live;
    map.Clear();
    EXPECT_EQ(TaggedConverter::live, before - 3);
    EXPECT_EQ(map.GetEntryCount(), 0u);
    EXPECT_TRUE(map.GetEntries().empty());
}

TEST_F(DptValueMapWithEntries, CopyOfTheMapClonesEveryConverter)
{
    const int before = TaggedConverter::live;
    {
        const DptValueMap copy(map);
        EXPECT_EQ(TaggedConverter::live, before + 3);
        EXPECT_NE(copy.GetEntry(KNXDPT{16, 9, 1}).GetConverter(), map.GetEntry(KNXDPT{16, 9, 1}).GetConverter());
        EXPECT_EQ(TagOf(copy.GetEntry(KNXDPT{16, 9, 1})), 91);
    }
    EXPECT_EQ(TaggedConverter::live, before);
}

TEST_F(DptValueMapWithEntries, CopyFindsItsOwnEntriesAfterTheOriginalIsGone)
{
    auto original = std::make_unique<DptValueMap>(map);
    DptValueMap copy(*original);
    DptValueMap assigned;
    assigned = *original;
    original.reset();
    EXPECT_EQ(TagOf(copy.GetEntry(KNXDPT{16, 9, 1})), 91);
    EXPECT_EQ(TagOf(copy.GetEntry(KNXDPT{16, 9, 7})), 90);
    EXPECT_EQ(TagOf(assigned.GetEntry(KNXDPT{8, 40, 3})), 403);
}

TEST_F(DptValueMapWithEntries, MainNumbersAboveTheCommonRangeAreFoundToo)
{
    ASSERT_TRUE(Add(map, KNXDPT{8, 255, 0}, ivtByte, 2550));
    ASSERT_TRUE(Add(map, KNXDPT{8, 256, 0}, ivtByte, 2560));
    ASSERT_TRUE(Add(map, KNXDPT{8, 65535, 2}, ivtByte, 65535));
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 255, 1})), 2550);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 256, 1})), 2560);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 65535, 2})), 65535);
    LogCapture capture;
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 257, 1})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 257.1")));
}

TEST_F(DptValueMapWithEntries, ClearForgetsEveryMainNumber)
{
    map.Clear();
    LogCapture capture;
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{16, 9, 1})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 9.1")));
}

TEST_F(DptValueMapWithEntries, AddingAnEntryByMoveKeepsItsConverterWithoutAnotherClone)
{
    DptValueEntry entry = MakeEntry(KNXDPT{8, 50, 1}, ivtByte, 501);
    const KnxConverter* converter = entry.GetConverter();
    const int before = TaggedConverter::live;
    ASSERT_TRUE(map.AddEntry(KNXDPT{8, 50, 1}, std::move(entry)));
    EXPECT_EQ(TaggedConverter::live, before);
    EXPECT_EQ(map.GetEntry(KNXDPT{8, 50, 1}).GetConverter(), converter);
    EXPECT_EQ(entry.GetConverter(), nullptr);  // NOLINT(bugprone-use-after-move): moved-from state is specified
}

TEST_F(DptValueMapWithEntries, AddingARepeatedDptByMoveKeepsTheFirstAndDeletesTheSecond)
{
    const int before = TaggedConverter::live;
    EXPECT_TRUE(map.AddEntry(KNXDPT{16, 9, 1}, MakeEntry(KNXDPT{16, 9, 1}, ivtFloat, 999)));
    EXPECT_EQ(TaggedConverter::live, before);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 1})), 91);
}

TEST(DptValueMapNoEntryRecord, HasEmptyTypeAndTheDefaultConverter)
{
    const DptValueEntry& record = DptValueMap::GetNoEntryRecord();
    EXPECT_EQ(record.GetDpt().size, 0);
    EXPECT_EQ(record.GetDpt().main, 0);
    EXPECT_EQ(record.GetDpt().sub, 0);
    EXPECT_EQ(record.GetValueType(), ivtEmpty);
    EXPECT_EQ(record.GetValueSubType(), OkaDP::istGeneric);
    ASSERT_NE(record.GetConverter(), nullptr);
    const KnxConverter& converter = *record.GetConverter();
    EXPECT_EQ(typeid(converter), typeid(KnxConverterDefault));
}

TEST(DptValueMapNoEntryRecord, IsOneRecordSharedByAllMapsAndThreads)
{
    const DptValueMap first;
    const DptValueMap second;
    const DptValueEntry* expected = &DptValueMap::GetNoEntryRecord();
    std::atomic<int> same{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&] {
            if (&DptValueMap::GetNoEntryRecord() == expected)
            {
                ++same;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(same.load(), 4);
    EXPECT_EQ(&first.GetEntry(KNXDPT{0, 1, 1}), expected);
    EXPECT_EQ(&second.GetEntry(KNXDPT{0, 1, 1}), expected);
}

TEST_F(DptValueMapWithEntries, EntriesAddedInAnyOrderAreListedAndFoundInOrder)
{
    // Before, between and after the existing main numbers, and above the directly indexed ones.
    ASSERT_TRUE(Add(map, KNXDPT{8, 300, 2}, ivtByte, 3002));
    ASSERT_TRUE(Add(map, KNXDPT{8, 5, 0}, ivtByte, 50));
    ASSERT_TRUE(Add(map, KNXDPT{8, 20, 7}, ivtByte, 207));
    ASSERT_TRUE(Add(map, KNXDPT{8, 300, 0}, ivtByte, 3000));
    ASSERT_TRUE(Add(map, KNXDPT{8, 9, 5}, ivtByte, 95));
    ASSERT_TRUE(Add(map, KNXDPT{8, 255, 1}, ivtByte, 2551));
    std::vector<int> tags;
    std::vector<std::uint16_t> mains;
    for (const auto& mainEntry : map.GetEntries())
    {
        mains.push_back(mainEntry.first);
        for (const auto& subEntry : mainEntry.second)
        {
            tags.push_back(TagOf(subEntry.second));
            EXPECT_EQ(subEntry.first, subEntry.second.GetDpt().sub);
        }
    }
    EXPECT_THAT(mains, ElementsAre(5, 9, 20, 40, 255, 300));
    EXPECT_THAT(tags, ElementsAre(50, 90, 91, 95, 207, 403, 2551, 3000, 3002));
    EXPECT_EQ(map.GetEntries().size(), 6u);
    EXPECT_EQ(map.GetEntries().at(9).size(), 3u);
    EXPECT_THROW(map.GetEntries().at(10), std::out_of_range);
    EXPECT_THROW(map.GetEntries().at(9).at(4), std::out_of_range);
    LogCapture capture;
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 5, 3})), 50);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 5})), 95);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{16, 9, 6})), 90);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 40, 3})), 403);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 255, 1})), 2551);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 300, 9})), 3000);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 300, 2})), 3002);
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 20, 1})));
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 299, 1})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 20.x"),
                                             Error("GetEntry - No Entry found for DPT = 299.1")));
}

TEST_F(DptValueMapWithEntries, EntriesStayWhereTheyAreWhenOthersAreAdded)
{
    const DptValueEntry& before = map.GetEntry(KNXDPT{8, 40, 3});
    const KnxConverter* converter = before.GetConverter();
    for (std::uint16_t main = 1; main < 40; ++main)
    {
        ASSERT_TRUE(Add(map, KNXDPT{8, main, 2}, ivtByte, main));
    }
    EXPECT_EQ(&map.GetEntry(KNXDPT{8, 40, 3}), &before);
    EXPECT_EQ(before.GetConverter(), converter);
    EXPECT_EQ(TagOf(before), 403);
    EXPECT_EQ(map.GetEntryCount(), 42u);
}

TEST_F(DptValueMapWithEntries, CopyKeepsTheKeyAnEntryWasRegisteredUnder)
{
    // Registered under 60.2, though the entry itself names 8.50.1.
    ASSERT_TRUE(map.AddEntry(KNXDPT{8, 60, 2}, MakeEntry(KNXDPT{8, 50, 1}, ivtByte, 602)));
    const DptValueMap copy(map);
    EXPECT_EQ(TagOf(copy.GetEntry(KNXDPT{8, 60, 2})), 602);
    EXPECT_EQ(copy.GetEntry(KNXDPT{8, 60, 2}).GetDpt().main, 50);
    EXPECT_EQ(copy.GetEntryCount(), 4u);
}

TEST_F(DptValueMapWithEntries, ATableAddedAtOnceIsStoredAsEntryByEntry)
{
    // In order, out of order, beyond the indexed main numbers, a repeat of an existing DPT and
    // one of a row of the same table, and a row without converter.
    const TaggedConverter c50(50), c95(95), c92(92), c3001(3001), repeat91(-91), repeat50(-50);
    const int liveBefore = TaggedConverter::live;
    const DptValueMap::Row rows[] = {
        {KNXDPT{8, 5, 0}, ivtByte, OkaDP::istGeneric, &c50},
        {KNXDPT{16, 9, 5}, ivtFloat, OkaDP::istPhysicalQuantity, &c95},
        {KNXDPT{16, 9, 2}, ivtFloat, OkaDP::istGeneric, &c92},
        {KNXDPT{16, 9, 1}, ivtWord, OkaDP::istGeneric, &repeat91},
        {KNXDPT{8, 300, 1}, ivtByte, OkaDP::istGeneric, &c3001},
        {KNXDPT{8, 5, 0}, ivtWord, OkaDP::istGeneric, &repeat50},
        {KNXDPT{8, 7, 0}, ivtWord, OkaDP::istGeneric, nullptr},
    };
    map.AddEntries(rows, sizeof rows / sizeof rows[0]);

    // One clone for each stored row; the repeats' clones are gone again.
    EXPECT_EQ(TaggedConverter::live, liveBefore + 4);
    EXPECT_EQ(map.GetEntryCount(), 3u + 5u);
    std::vector<int> tags;
    for (const auto& mainEntry : map.GetEntries())
    {
        for (const auto& subEntry : mainEntry.second)
        {
            tags.push_back(TagOf(subEntry.second));
        }
    }
    EXPECT_THAT(tags, ElementsAre(50, -1, 90, 91, 92, 95, 403, 3001));
    LogCapture capture;
    const DptValueEntry& found = map.GetEntry(KNXDPT{0, 9, 5});
    EXPECT_EQ(found.GetDpt().size, 16);
    EXPECT_EQ(found.GetDpt().main, 9);
    EXPECT_EQ(found.GetDpt().sub, 5);
    EXPECT_EQ(found.GetValueType(), ivtFloat);
    EXPECT_EQ(found.GetValueSubType(), OkaDP::istPhysicalQuantity);
    EXPECT_NE(found.GetConverter(), &c95);
    EXPECT_EQ(map.GetEntry(KNXDPT{16, 9, 1}).GetValueType(), ivtFloat);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 5, 1})), 50);
    EXPECT_EQ(map.GetEntry(KNXDPT{8, 7, 3}).GetConverter(), nullptr);
    EXPECT_TRUE(IsNoEntryRecord(map.GetEntry(KNXDPT{8, 300, 7})));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 300.x")));

    // Entries added afterwards, one by one, still find their places.
    ASSERT_TRUE(Add(map, KNXDPT{8, 6, 4}, ivtByte, 64));
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 6, 4})), 64);
    EXPECT_EQ(TagOf(map.GetEntry(KNXDPT{8, 5, 9})), 50);
    map.Clear();
    // The fixture's three entries went with them.
    EXPECT_EQ(TaggedConverter::live, liveBefore - 3);
}
