#include "diag/IdStrings.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

TEST(IdStringsTest, EqualTextsFromDifferentBuffersShareOnePointer)
{
    std::string first = "label";
    char second[] = {'l', 'a', 'b', 'e', 'l', '\0'};
    const char* a = IdStrings::idString(first.c_str());
    const char* b = IdStrings::idString(second);
    EXPECT_EQ(a, b);
    EXPECT_STREQ(a, "label");
    first[0] = 'X'; // the interned copy does not follow its source
    EXPECT_STREQ(a, "label");
    EXPECT_NE(IdStrings::idString("labels"), a);
}

TEST(IdStringsTest, ManyTextsStayDistinctAndStable)
{
    std::vector<const char*> pointers;
    for (int i = 0; i < 20000; ++i)
        pointers.push_back(IdStrings::idString(("name" + std::to_string(i)).c_str()));
    const std::string huge(100000, 'z');
    const char* hugePointer = IdStrings::idString(huge.c_str());
    for (int i = 0; i < 20000; ++i) {
        EXPECT_EQ(pointers[i], IdStrings::idString(("name" + std::to_string(i)).c_str()));
        ASSERT_STREQ(pointers[i], ("name" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(hugePointer, IdStrings::idString(huge.c_str()));
}

TEST(IdStringsTest, InnerNulsAreKeptInViewForm)
{
    const char bytes[] = {'a', '\0', 'b'};
    const char* withNul = IdStrings::idString(std::string_view(bytes, 3));
    EXPECT_EQ(withNul[2], 'b');
    EXPECT_EQ(withNul[3], '\0');
    EXPECT_NE(withNul, IdStrings::idString("a"));
}

} // namespace
} // namespace vorp
