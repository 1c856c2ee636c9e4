#pragma once

#include "frontend/Operand.h"

#include <string>

namespace vorp::test {

// The tree as an s-expression, e.g. "(ADD 1 (MULTIPLY 2 3))"; leaves by their spelling.
std::string shape(const Operand* operand);

} // namespace vorp::test
