#pragma once

#include "model/VormSection.h"

#include <cstdio>
#include <string>

namespace vorp {

class VormAssembler;

// The listing: labels, data and reserved space of every section in final order.
std::string makeListing(VormAssembler& assembler);
// False when a line can't be written.
bool printListing(FILE* file, LineList& lines);

} // namespace vorp
