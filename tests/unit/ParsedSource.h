#pragma once

// Runs source text through the real tokeniser, parser and AsmWriter into a fresh assembler, so that
// tests can look at the lines, labels, notes and ".expr" records the directives leave behind.

#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "assembler/AsmWriter.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vorp::test {

class ParsedSource {
public:
    // Parses `text` as file "a.S" into ".text"; what went to standard error is kept in `diagnostics`.
    explicit ParsedSource(const std::string& text, bool debugScheduling = false)
        : m_utils{&m_plainErrors},
          run(AssemblerOptions{.sourcePath = "a.S",
                               .outputFile = m_output,
                               .rewriteDebug = false,
                               .debugScheduling = debugScheduling},
              &m_utils, &errors),
          assembler(run.getAssembler())
    {
        testing::internal::CaptureStderr();
        VorpTokeniser tokeniser(assembler.getIdStrings());
        tokeniser.lexInit({}, &errors);
        tokeniser.addInput("a.S", "a.S", text);
        tokeniser.startScanning();
        AsmWriter writer(run, errors, false);
        m_section = assembler.addSection(".text", "ax", "progbits", 0, "", false);
        writer.setCurrentSection(m_section);
        VorpParser(tokeniser, errors, writer).parse();
        diagnostics = testing::internal::GetCapturedStderr();
    }

    VormLabel* label(const char* name) { return assembler.getLabels().findLabel(name); }
    VormSection* section() const { return m_section; }
    std::vector<VormLine*> lines() const { return {m_section->getLines().begin(), m_section->getLines().end()}; }
    const std::vector<std::unique_ptr<VormLinkerExps::Expression>>& exps()
    {
        return assembler.getLinkerExps().getExpressions();
    }

    // Settles addresses; the passes must run cleanly.
    void settle()
    {
        ASSERT_TRUE(run.runPasses());
    }

    // The bytes of one line; its relocations go to the section.
    std::vector<std::uint8_t> encode(VormLine* line)
    {
        std::vector<std::uint8_t> bytes(line->getNumBytes() + 1, 0xee);
        line->encode(bytes.data(), m_section->getRelocations(), assembler, errors);
        EXPECT_EQ(bytes.back(), 0xee) << "wrote past the line";
        bytes.pop_back();
        return bytes;
    }

    // Every record as "kind label: op op op": constants in decimal, strings quoted, named labels by
    // name and nameless ones as #1, #2... in order of first appearance in the listing.
    std::vector<std::string> records()
    {
        std::vector<std::string> result;
        for (const auto& e : exps()) {
            std::string text = std::to_string(e->kind) + " " + name(e->label) + ":";
            for (std::uint32_t i = 0; i < e->numOps; ++i) {
                const VormLinkerExps::Operand& op = e->ops[i];
                if (op.type == VormLinkerExps::OPERAND_CONSTANT)
                    text += " " + std::to_string(op.constant);
                else if (op.type == VormLinkerExps::OPERAND_SYMBOL)
                    text += " " + name(op.symbol);
                else
                    text += std::string(" \"") + (op.string ? op.string : "(null)") + "\"";
            }
            result.push_back(text);
        }
        return result;
    }

    // The section's relocations as "type label@address", with "+addend" when there is one.
    std::vector<std::string> relocations()
    {
        std::vector<std::string> result;
        const Relocations& r = m_section->getRelocations();
        for (std::size_t i = 0; i < r.numRelocationEntries(); ++i) {
            std::string text = std::to_string(r.relocationEntryType(i)) + " " + name(r.relocationEntrySym(i)) + "@" +
                               std::to_string(r.relocationEntryAddress(i));
            if (r.relocationEntryAddEnd(i))
                text += "+" + std::to_string(r.relocationEntryAddEnd(i));
            result.push_back(text);
        }
        return result;
    }

    // The label a listing name stands for, after records() has run.
    VormLabel* nameless(int number) const
    {
        for (const auto& [label, n] : m_nameless)
            if (n == number)
                return const_cast<VormLabel*>(label);
        return nullptr;
    }

    std::string name(const VormLabel* label)
    {
        if (!label)
            return "(null)";
        if (!label->isUnnamed())
            return label->getName();
        auto found = m_nameless.find(label);
        if (found == m_nameless.end())
            found = m_nameless.emplace(label, static_cast<int>(m_nameless.size()) + 1).first;
        return "#" + std::to_string(found->second);
    }

private:
    std::string m_output = testing::TempDir() + "parsed_source_test.o";
    ErrorHandler m_plainErrors;
    TelkUtils m_utils;
    std::map<const VormLabel*, int> m_nameless;
    VormSection* m_section = nullptr;

public:
    VorpErrorHandler errors;
    AssemblerRun run;
    VormAssembler& assembler;
    std::string diagnostics;
};

} // namespace vorp::test
