#pragma once

#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "model/Relocations.h"
#include "assembler/AsmWriter.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormAssembler.h"
#include "model/VormLabel.h"
#include "model/VormLine.h"
#include "model/VormSection.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace vorp::encoding_test {

// The result of assembling a text into ".text": the bytes as hex pairs ("1B 10 "), the
// relocations ("type@address:symbol+addend ") and whatever went to standard error; `fatal` when
// an error ended the run.
struct Assembled {
    std::string bytes;
    std::string relocations;
    std::string messages;
    bool fatal = false;
};

inline void assembleInto(Assembled& result, const std::string& text, std::uint32_t maxPasses);

// Runs the format passes, then encodes every line of ".text".
inline Assembled assemble(const std::string& text, std::uint32_t maxPasses = 4000)
{
    Assembled result;
    testing::internal::CaptureStderr();
    try {
        assembleInto(result, text, maxPasses);
    } catch (const FatalError& error) {
        EXPECT_EQ(error.status(), 1);
        std::fputs(error.message().c_str(), stderr);
        result.fatal = true;
    }
    result.messages = testing::internal::GetCapturedStderr();
    return result;
}

inline void assembleInto(Assembled& result, const std::string& text, std::uint32_t maxPasses)
{
    ErrorHandler plain;
    TelkUtils utils{&plain};
    VorpErrorHandler errors;
    const std::string output = testing::TempDir() + "encoding_test.o";
    AssemblerRun run(AssemblerOptions{.sourcePath = "a.S", .outputFile = output, .maxEncodingPasses = maxPasses}, &utils,
                     &errors);
    VormAssembler& assembler = run.getAssembler();
    VorpTokeniser tokeniser(assembler.getIdStrings());
    tokeniser.lexInit({}, &errors);
    tokeniser.addInput("a.S", "a.S", text);
    tokeniser.startScanning();
    AsmWriter writer(run, errors, false);
    writer.setCurrentSection(assembler.addSection(".text", "ax", "progbits", 0, "", false));
    VorpParser(tokeniser, errors, writer).parse();
    if (!run.runPasses())
        return;
    VormSection* section = assembler.findSection(".text");
    std::vector<std::uint8_t> buffer(section->getSize());
    for (VormLine* line : section->getLines())
        line->encode(buffer.data() + line->getAddress().min, section->getRelocations(), assembler, errors);
    char hex[4];
    for (std::uint8_t byte : buffer) {
        snprintf(hex, sizeof(hex), "%02X ", byte);
        result.bytes += hex;
    }
    const Relocations& relocations = section->getRelocations();
    for (std::size_t i = 0; i < relocations.numRelocationEntries(); ++i) {
        result.relocations += std::to_string(relocations.relocationEntryType(i)) + "@" +
                              std::to_string(relocations.relocationEntryAddress(i)) + ":" +
                              relocations.relocationEntrySym(i)->getName() + "+" +
                              std::to_string(relocations.relocationEntryAddEnd(i)) + " ";
    }
}

// The bytes of a text that must assemble without a message.
inline std::string bytesOf(const std::string& text)
{
    const Assembled result = assemble(text);
    EXPECT_EQ(result.messages, "") << text;
    EXPECT_FALSE(result.fatal) << text;
    return result.bytes;
}

// The same line written in the default syntax and after ".syntax architectural".
inline std::string archBytesOf(const std::string& line)
{
    return bytesOf(".syntax architectural\n" + line + "\n");
}

// `count` copies of a line.
inline std::string repeat(const std::string& line, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += line;
    return text;
}

} // namespace vorp::encoding_test
