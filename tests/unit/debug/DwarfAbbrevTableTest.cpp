#include "debug/DwarfAbbrevTable.h"

#include <gtest/gtest.h>

namespace vorp {
namespace {

TEST(DwarfAbbrevTableTest, FormSizesLeaveTheSizeAloneWhereThereIsNone)
{
    unsigned size = 99;
    EXPECT_TRUE(getDwarfFormSize(19, size)); // ref4
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(getDwarfFormSize(20, size)); // ref8
    EXPECT_EQ(size, 8u);
    size = 99;
    EXPECT_FALSE(getDwarfFormSize(8, size)); // string
    EXPECT_FALSE(getDwarfFormSize(21, size)); // ref_udata
    EXPECT_EQ(size, 99u);
    // The unused form 2 and unknown forms give a size of 0.
    EXPECT_FALSE(getDwarfFormSize(2, size));
    EXPECT_EQ(size, 0u);
    size = 99;
    EXPECT_FALSE(getDwarfFormSize(23, size));
    EXPECT_EQ(size, 0u);
    size = 99;
    EXPECT_FALSE(getDwarfFormSize(0, size));
    EXPECT_EQ(size, 0u);
}

TEST(DwarfAbbrevTableTest, ARepeatedCodeKeepsTheFirstEntry)
{
    DwarfAbbrevTable table;
    table.addEntry(1, 0x11, true)->addAttribute(3, 8);
    DwarfAbbrevEntry* second = table.addEntry(1, 0x2e, false);
    second->addAttribute(0x11, 1);
    const DwarfAbbrevEntry* found = table.find(1);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->tag, 0x11u);
    ASSERT_EQ(found->attributes.size(), 1u);
    EXPECT_EQ(found->attributes[0].form, 8u);
    EXPECT_EQ(table.find(2), nullptr);
}

} // namespace
} // namespace vorp
