#include "assembler/AssemblerRun.h"

#include "debug/DebugInfoRewriter.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "emit/Listing.h"
#include "emit/ObjectEmitter.h"
#include "layout/FormatChoice.h"
#include "model/VormCCDirectiveLine.h"


namespace vorp {

AssemblerRun::AssemblerRun(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler)
    : m_assembler(std::move(options), utils, errorHandler), m_errorHandler(errorHandler),
      m_debug(errorHandler)
{
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

int AssemblerRun::postParse(const char* fileSymbolName, std::vector<std::uint8_t>& object, std::string& listing)
{
    object.clear();
    listing.clear();
    bool made = runPasses() && ObjectEmitter(m_assembler, m_notes).dumpBinary(fileSymbolName, object, getOptions().objectWriter);
    if (made && getOptions().listing && m_errorHandler->getMakeBinary())
        listing = makeListing(m_assembler);
    if (!made || !m_errorHandler->getMakeBinary()) {
        object.clear();
        listing.clear();
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
