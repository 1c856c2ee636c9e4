#pragma once

#include "model/VormSection.h"

#include <cstdio>

namespace vorp {

class OutputFile;
class VormAssembler;

// The listing: labels, data and reserved space of every section in final order, into `listing`,
// opened on the listing's name and closed, but not yet committed. False, with the reason reported,
// when it can't be written.
bool printListing(VormAssembler& assembler, OutputFile& listing);
// False when a line can't be written.
bool printListing(FILE* file, LineList& lines);

} // namespace vorp
