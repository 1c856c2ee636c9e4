#include "diag/CatchableErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/VorpErrorHandler.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(VorpErrorHandlerTest, ErrorsAreNumberedLocatedAndClearMakeBinaryForGood)
{
    VorpErrorHandler handler;
    CaptureStderr();
    handler.vorpError(LineLocation("prog.S", 12), AssErrorCodes::SYNTAX, "Stray '%c' in assembly file\n", '!');
    handler.vorpError(NoLocation(), AssErrorCodes::UNRECOVERABLE, "An unrecoverable error has occured.\n");
    handler.vorpError(LineLocation("x.S", 1), AssErrorCodes::SIGNAL_SETUP, "no line end");
    handler.vorpWarning(LineLocation("x.S", 2), AssErrorCodes::LEXICAL_WARNING, " and more\n");
    EXPECT_EQ(GetCapturedStderr(), "prog.S:12: Error: A00001 Stray '!' in assembly file\n"
                                   "Error: A00019 An unrecoverable error has occured.\n"
                                   "x.S:1: Error: A00020 no line endx.S:2: Warning: A00002  and more\n");
    EXPECT_FALSE(handler.getMakeBinary());
}

TEST(VorpErrorHandlerTest, WarningsFollowTheShowAndFatalSwitches)
{
    VorpErrorHandler shown;
    CaptureStderr();
    shown.vorpWarning(LineLocation("a.S", 3), AssErrorCodes::LEXICAL_WARNING, "integer constant too large\n");
    EXPECT_EQ(GetCapturedStderr(), "a.S:3: Warning: A00002 integer constant too large\n");
    EXPECT_TRUE(shown.getMakeBinary());

    // Suppressed warnings change nothing, not even when they would be fatal.
    VorpErrorHandler hidden;
    hidden.setShowWarnings(false);
    hidden.setFatalWarnings(true);
    CaptureStderr();
    hidden.vorpWarning(LineLocation("a.S", 3), AssErrorCodes::LEXICAL_WARNING, "text\n");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_TRUE(hidden.getMakeBinary());

    VorpErrorHandler fatal;
    fatal.setFatalWarnings(true);
    CaptureStderr();
    fatal.vorpWarning(LineLocation("a.S", 4), AssErrorCodes::DEBUG_REWRITE, "unable to rewrite %s section\n",
                      ".debug_aranges");
    EXPECT_EQ(GetCapturedStderr(), "a.S:4: Warning: A00055 unable to rewrite .debug_aranges section\n");
    EXPECT_FALSE(fatal.getMakeBinary());
}

TEST(ErrorHandlerTest, FatalErrorWithoutExitPrintsAndCopiesToStdoutOnRequest)
{
    ErrorHandler handler;
    CaptureStderr();
    CaptureStdout();
    handler.fatalError(false, "%s\n", "first");
    handler.setTraceOnError(true);
    handler.fatalError(false, "%d\n", 2);
    EXPECT_EQ(GetCapturedStdout(), "2\n");
    EXPECT_EQ(GetCapturedStderr(), "first\n2\n");
}

TEST(ErrorHandlerTest, FatalErrorWithExitPrintsThenThrowsStatusOne)
{
    ErrorHandler handler;
    CaptureStderr();
    try {
        handler.fatalError(true, "vorp: no output file specified for '%s' flag\n", "-o");
        ADD_FAILURE() << "no exception";
    } catch (const FatalError& error) {
        EXPECT_EQ(error.status(), 1);
        EXPECT_FALSE(error.discardsOutput());
    }
    EXPECT_EQ(GetCapturedStderr(), "vorp: no output file specified for '-o' flag\n");
}

TEST(ErrorHandlerTest, TracesPrintOnlyWhenTheirKindIsOn)
{
    ErrorHandler handler;
    CaptureStdout();
    handler.trace(ErrorHandler::TRACE_MEM, true, "hidden\n");
    handler.setTraceConfig(ErrorHandler::TRACE_MEM, true);
    handler.trace(ErrorHandler::TRACE_MEM, true, "shown %d\n", 1);
    handler.trace(ErrorHandler::TRACE_MEM, false, "bare\n");
    handler.setGdbMiTracing(true);
    handler.trace("two\nlines\n");
    EXPECT_EQ(GetCapturedStdout(), "TRACE_MEM shown 1\nbare\n@\"two\\nlines\\n\"\n");

    CaptureStderr();
    handler.trace(7, false, "x\n");
    EXPECT_EQ(GetCapturedStderr(), "unknown trace type: 7\n");
}

TEST(CatchableErrorHandlerTest, ExitingErrorsAreThrownInsteadOfPrinted)
{
    CatchableErrorHandler handler;
    CaptureStderr();
    try {
        handler.fatalError(true, "bad %s\n", "thing");
        ADD_FAILURE() << "no exception";
    } catch (const std::string& text) {
        EXPECT_EQ(text, "bad thing\n");
    }
    handler.fatalError(false, "kept %d\n", 3);
    EXPECT_EQ(GetCapturedStderr(), "kept 3\n");
}

} // namespace
} // namespace vorp
