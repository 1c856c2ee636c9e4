#include "model/VormLine.h"

#include <cassert>
#include <iostream>
#include <sstream>

namespace vorp {

namespace {

std::uint32_t idCounter = 0;

} // namespace

VormLine::VormLine(LineType type, bool schedule) : m_type(type), m_schedule(schedule), m_id(idCounter++) {}

bool VormLine::chooseEncoder(bool, VormLabels&, bool& changed, EncodingFailInfo&, bool)
{
    changed = false;
    return true;
}

VormAddress VormLine::getNextAddress() const
{
    std::uint32_t minBytes = 0;
    std::uint32_t maxBytes = 0;
    getByteRange(minBytes, maxBytes);
    std::uint32_t low = m_address.min + minBytes;
    std::uint32_t high = m_address.max + maxBytes;
    if (low > high)
        std::swap(low, high);
    return VormAddress{low, high};
}

void VormLine::setAddress(const VormAddress& address)
{
    assert(address.min >= m_address.min && address.max <= m_address.max &&
           "New address not refinement of previous address");
    m_address = address;
}

std::uint32_t VormLine::getNumBytes() const
{
    std::uint32_t min = 0;
    std::uint32_t max = 0;
    getByteRange(min, max);
    assert(min == max);
    return min;
}

void VormLine::printDump(FILE* file) const
{
    std::ostringstream text;
    dump(text);
    fprintf(file, "%s\n", text.str().c_str());
}

void VormLine::dump() const
{
    dump(std::cerr);
    std::cerr << '\n';
    std::cerr.flush();
}

} // namespace vorp
