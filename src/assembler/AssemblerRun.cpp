#include "assembler/AssemblerRun.h"

#include "debug/DebugInfoRewriter.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "emit/Listing.h"
#include "emit/ObjectEmitter.h"
#include "emit/OutputFile.h"
#include "encoding/VormOperImm.h"
#include "encoding/VormOperReg.h"
#include "layout/FormatChoice.h"
#include "model/VormCCDirectiveLine.h"

#include <cstdio>

namespace vorp {

AssemblerRun::AssemblerRun(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler)
    : m_assembler(std::move(options), utils, errorHandler), m_errorHandler(errorHandler), m_utils(utils),
      m_debug(errorHandler)
{
    VormOperImm::instance().setErrorHandler(errorHandler);
    VormOperImm::instance().setVormLabels(&m_assembler.getLabels());
    VormOperReg::instance().setErrorHandler(errorHandler);
}

bool AssemblerRun::runPasses()
{
    auto ok = [this] { return m_errorHandler->getMakeBinary(); };
    checkForUnterminatedCCTop();
    if (ok() && getOptions().rewriteDebug)
        rewriteDwarf();
    if (ok())
        expandDirectives();
    if (ok())
        chooseInstructionFormats();
    if (ok())
        expandLateDirectives();
    if (ok())
        m_assembler.getLabels().finaliseLabels();
    if (ok())
        addDefaultNotes();
    return ok();
}

int AssemblerRun::postParse(const char* fileSymbolName)
{
    OutputFile object;
    OutputFile listing;
    bool written = runPasses() && ObjectEmitter(m_assembler, m_notes).dumpBinary(fileSymbolName, object);
    // Both files are complete before either is put in place.
    if (written && getOptions().listing && m_errorHandler->getMakeBinary())
        written = printListing(m_assembler, listing);
    if (written && m_errorHandler->getMakeBinary()) {
        written = object.commit() && listing.commit();
        if (!written)
            (object.failed() ? object : listing).reportFailure(*m_utils->errorHandler);
    }
    // After any error the object must not survive, not even a stale one from an earlier run. A
    // device or pipe that refused the bytes is no object, though: it stays.
    if (!written || !m_errorHandler->getMakeBinary()) {
        const bool keepOutput = object.isDevice() && (object.failed() || listing.failed());
        object.discard();
        listing.discard();
        if (!keepOutput)
            std::remove(m_assembler.getOutputFile());
        return 1;
    }
    return 0;
}

void AssemblerRun::checkForUnterminatedCCTop()
{
    for (const auto& section : m_assembler.getSections()) {
        if (const VormCCDirectiveLine* top = section->getOpenCCTop())
            m_errorHandler->vorpError(top->getLocation(), AssErrorCodes::UNTERMINATED_CC_TOP,
                                      "Unterminated cc_top directive.\n");
    }
}

void AssemblerRun::rewriteDwarf()
{
    DebugInfoRewriter(m_assembler, getOptions().warnRewriteDebug).rewriteDwarf();
}

void AssemblerRun::expandDirectives()
{
    // Sections made by this step are not visited by it.
    const std::size_t count = m_assembler.getSections().size();
    for (std::size_t i = 0; i < count; ++i)
        m_debug.expandDirectives(m_assembler, m_assembler.getSections()[i].get());
    const bool fromLines = DebugData::shouldGenDwarfFromLines(m_assembler);
    const bool generate = DebugData::shouldGenDwarf(m_assembler);
    if (fromLines)
        m_debug.emitDefaultDwarfSections(m_assembler);
    if (generate)
        m_debug.encodeLines(m_assembler, fromLines);
    m_zebInfo.encode(m_assembler);
}

void AssemblerRun::chooseInstructionFormats()
{
    vorp::chooseInstructionFormats(m_assembler);
}

void AssemblerRun::expandLateDirectives()
{
    std::vector<VormSection*> sections;
    m_debug.getDebugFrame().encode(m_assembler, sections);
    for (VormSection* section : sections) {
        m_debug.expandDirectives(m_assembler, section);
        vorp::chooseInstructionFormats(m_assembler, section);
    }
}

} // namespace vorp
