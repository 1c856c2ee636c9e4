#include "emit/Listing.h"

#include "diag/MemoryStream.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <new>

namespace vorp {

std::string makeListing(VormAssembler& assembler)
{
    MemoryStream out;
    bool written = true;
    for (const auto& section : assembler.getSections())
        written = written && printListing(out.stream(), section->getLines());
    std::string text;
    if (!out.take(text) || !written)
        throw std::bad_alloc();
    return text;
}

bool printListing(FILE* file, LineList& lines)
{
    for (VormLine* line : lines) {
        line->printListing(file);
        if (std::ferror(file))
            return false;
    }
    return true;
}

} // namespace vorp
