#include "model/VormLine.h"

#include "diag/FatalError.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace vorp {

VormLine::VormLine(LineType type, bool schedule) : m_type(type), m_schedule(schedule) {}

bool VormLine::chooseEncoder(bool, VormLabels&, AddressReader*, bool& changed, EncodingFailInfo&, bool)
{
    changed = false;
    return true;
}

VormAddress VormLine::getNextAddress() const
{
    std::uint32_t minBytes = 0;
    std::uint32_t maxBytes = 0;
    getByteRange(minBytes, maxBytes);
    // Far beyond the address space an end is only ever compared, never used: it saturates
    // instead of wrapping back into the range.
    auto end = [](std::uint32_t address, std::uint32_t bytes) {
        const std::uint64_t sum = std::uint64_t{address} + bytes;
        return sum > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(sum);
    };
    std::uint32_t low = end(m_address.min, minBytes);
    std::uint32_t high = end(m_address.max, maxBytes);
    if (low > high)
        std::swap(low, high);
    return VormAddress{low, high};
}

void VormLine::setAddress(const VormAddress& address)
{
    // The input decides the sizes (.skip, .align, data): a line may be pushed out of the address
    // space, and that ends the run. A bound beyond it is only pessimistic and is cut back to it:
    // the exact address is checked in the end.
    if (address.min > MAX_ADDRESS) {
        const LineLocation location = getLocation();
        addressRangeExceeded(location.getFile(), location.getLine());
    }
    const VormAddress bounded{address.min, std::min(address.max, MAX_ADDRESS)};
    assert(bounded.min >= m_address.min && bounded.max <= m_address.max &&
           "New address not refinement of previous address");
    m_address = bounded;
}

void addressRangeExceeded(const char* file, unsigned line)
{
    // The object of an earlier run must not pass for the result of this one.
    throw FatalError(1, true,
                     std::string("vorp: Error: ") + (file ? file : "<unknown>") + ":" + std::to_string(line) +
                         ": the code and data of a section go beyond the 30-bit address range\n");
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
