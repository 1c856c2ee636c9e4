#include "diag/Location.h"

namespace vorp {

void LineLocation::write(FILE* out) const
{
    fprintf(out, "%s:%u: ", m_file ? m_file : "", m_line);
}

} // namespace vorp
