#include "debug/DebugFrame.h"

#include "debug/DataWriter.h"
#include "model/VormAssembler.h"

#include <cassert>

namespace vorp {

namespace {

unsigned p_ccTopCounter = 0;

} // namespace

unsigned DebugFrame::nextCCTopNumber()
{
    return p_ccTopCounter++;
}

std::string DebugFrame::genCCTopLabel(const std::string& name)
{
    return name + ".elim." + std::to_string(nextCCTopNumber());
}

DebugFrame::~DebugFrame()
{
    for (DebugFrameProc* proc : m_procs)
        delete proc;
}

DebugFrameProc* DebugFrame::addProc()
{
    m_procs.push_back(new DebugFrameProc);
    return m_procs.back();
}

void DebugFrame::encode(VormAssembler&, std::vector<VormSection*>&)
{
}

} // namespace vorp
