#include "ParsedSource.h"
#include "debug/DebugLine.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

// Rows as "file:line label-kind [cc] [end]", with the label checked against its line separately.
std::string rows(const DebugLine& table)
{
    std::string text;
    for (const DebugLineRow& row : table.getRows()) {
        text += std::to_string(row.file) + ":" + std::to_string(row.line);
        text += row.address.rfind(".Ldefined.", 0) == 0 ? "" : " ?" + row.address;
        if (!row.ccName.empty())
            text += row.ccName == row.address ? " cc" : " cc-of-row-before";
        if (!row.isStmt)
            text += " !stmt";
        if (row.endSequence)
            text += " end";
        text += "; ";
    }
    return text;
}

TEST(DebugLineRowsTest, LocDirectivesBecomeRowsWhenTheCompilerWroteDebugInfo)
{
    test::ParsedSource source(".section .debug_info, \"\", @progbits\n.text\n"
                              ".file 1 \"a.c\"\n.file 2 \"b.c\"\n.loc 1 5 0\nnop\n"
                              ".cc_top f.function, f\nf:\n.loc 1 6 0\nnop\n.cc_bottom f.function\n"
                              ".loc 2 7 0 is_stmt 0\nnop\n");
    source.settle();
    // The sequence open at the cc_bottom ends with it, and the walk stays inside the block until
    // the next cc_top: the row after it is a cc row too.
    // An end row is a copy of the row before it, block name included.
    EXPECT_EQ(rows(source.run.getDebugLine()),
              "1:5; 1:6 cc; 1:6 cc-of-row-before end; 2:7 cc !stmt; 2:7 cc-of-row-before !stmt end; ");
    // Each row's label stands right before its .loc line.
    for (const DebugLineRow& row : source.run.getDebugLine().getRows()) {
        VormLabel* label = source.label(row.address.c_str());
        ASSERT_NE(label, nullptr) << row.address;
        EXPECT_NE(label->getTargetLine(), nullptr);
    }
}

TEST(DebugLineRowsTest, LocDirectivesAloneMakeNoRows)
{
    test::ParsedSource source(".loc 1 5 0\nnop\n");
    source.settle();
    EXPECT_TRUE(source.run.getDebugLine().getRows().empty());
}

TEST(DebugLineRowsTest, FileIndexesAndValidation)
{
    test::ParsedSource source(".file 0 \"zero.c\"\n.file 2 \"b.c\"\n.file 2 \"c.c\"\n.file 2 \"c.c\"\n");
    EXPECT_EQ(source.diagnostics, "a.S:1: Error: A00042 Invalid filename index.a.S:3: Error: A00021 Filename index is not "
                                  "unique.");
    EXPECT_EQ(source.run.getDebugLine().getFiles(), (std::vector<std::string>{"", "c.c"}));

    VorpErrorHandler errors;
    DebugLine gaps(&errors);
    gaps.addFile(2, "b.c", NoLocation());
    testing::internal::CaptureStderr();
    gaps.validate();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: A00043 File indicies for .file directive are not contiguous.");

    DebugLine table(&errors);
    table.addFile(1, "a.c", NoLocation());
    table.addEntry("x", 1, 3, 0, true, true, false, true, false, 0, "");
    table.addEntry("y", 2, 4, 0, true, false, false, false, false, 0, "");
    testing::internal::CaptureStderr();
    table.validate();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: A00043 Invalid file index in .loc directive.");
    // An open last sequence is ended at the last row's own label.
    ASSERT_EQ(table.getRows().size(), 3u);
    EXPECT_EQ(table.getRows()[2].address, "y");
    EXPECT_TRUE(table.getRows()[2].endSequence);
}

} // namespace
} // namespace vorp
