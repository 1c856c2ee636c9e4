#include "emit/Listing.h"

#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "emit/OutputFile.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <string>

namespace vorp {

bool printListing(VormAssembler& assembler, OutputFile& listing)
{
    const std::string path = assembler.getOptions().outputFile + ".txt";
    if (!listing.open(path.c_str())) {
        // The run ends here, and the object written for it goes too.
        OutputFile::removeTemporaries();
        assembler.getUtils()->errorHandler->fatalError(true, "vorp: Error: unable to open listing file '%s' for write\n",
                                          path.c_str());
        return false;
    }
    for (const auto& section : assembler.getSections()) {
        if (!printListing(listing.stream(), section->getLines())) {
            listing.writeFailed();
            break;
        }
    }
    if (!listing.close()) {
        listing.reportFailure(*assembler.getUtils()->errorHandler);
        return false;
    }
    return true;
}

bool printListing(FILE* file, LineList& lines)
{
    for (VormLine* line : lines) {
        line->printListing(file);
        if (std::fflush(file) != 0)
            return false;
    }
    return true;
}

} // namespace vorp
