#include "diag/IdStrings.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

TEST(IdStringsTest, EqualTextsFromDifferentBuffersShareOnePointer)
{
    IdStrings strings;
    std::string first = "label";
    char second[] = {'l', 'a', 'b', 'e', 'l', '\0'};
    const char* a = strings.idString(first.c_str());
    const char* b = strings.idString(second);
    EXPECT_EQ(a, b);
    EXPECT_STREQ(a, "label");
    first[0] = 'X'; // the interned copy does not follow its source
    EXPECT_STREQ(a, "label");
    EXPECT_NE(strings.idString("labels"), a);
}

TEST(IdStringsTest, ManyTextsStayDistinctAndStable)
{
    IdStrings strings;
    std::vector<const char*> pointers;
    for (int i = 0; i < 20000; ++i)
        pointers.push_back(strings.idString(("name" + std::to_string(i)).c_str()));
    const std::string huge(100000, 'z');
    const char* hugePointer = strings.idString(huge.c_str());
    for (int i = 0; i < 20000; ++i) {
        EXPECT_EQ(pointers[i], strings.idString(("name" + std::to_string(i)).c_str()));
        ASSERT_STREQ(pointers[i], ("name" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(hugePointer, strings.idString(huge.c_str()));
}

TEST(IdStringsTest, InnerNulsAreKeptInViewForm)
{
    IdStrings strings;
    const char bytes[] = {'a', '\0', 'b'};
    const char* withNul = strings.idString(std::string_view(bytes, 3));
    EXPECT_EQ(withNul[2], 'b');
    EXPECT_EQ(withNul[3], '\0');
    EXPECT_NE(withNul, strings.idString("a"));
}

TEST(IdStringsTest, NumbersAndTheGeneratedFileAreInternedTexts)
{
    IdStrings strings;
    for (unsigned value : {0u, 7u, 42u, 4095u, 4096u, 70000u, 4294967295u}) {
        const std::string text = std::to_string(value);
        EXPECT_EQ(strings.numberText(value), strings.idString(text.c_str())) << value;
        EXPECT_EQ(strings.numberText(value), strings.numberText(value)) << value;
    }
    EXPECT_STREQ(strings.generatedFile(), "<unknown>");
    EXPECT_EQ(strings.generatedFile(), strings.idString("<unknown>"));
}

TEST(IdStringsTest, EachTableHasItsOwnTexts)
{
    IdStrings first;
    const char* name = first.idString("label");
    const char* number = first.numberText(12345);
    {
        IdStrings second;
        EXPECT_NE(second.idString("label"), name);
        EXPECT_NE(second.numberText(12345), number);
        EXPECT_NE(second.generatedFile(), first.generatedFile());
    }
    // The first table is untouched by the second and its end.
    EXPECT_EQ(first.idString("label"), name);
    EXPECT_STREQ(number, "12345");
}

} // namespace
} // namespace vorp
