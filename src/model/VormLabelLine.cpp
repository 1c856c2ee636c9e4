#include "model/VormLabelLine.h"

#include "model/VormLabel.h"

namespace vorp {

VormLabelLine::VormLabelLine(VormLabel* label, const LineLocation& location, bool schedule)
    : VormLine(LABEL_LINE, schedule), m_label(label), m_location(location)
{
}

bool VormLabelLine::isTargetLine() const
{
    return m_label->isBranchTarget();
}

void VormLabelLine::dump(std::ostream& out) const
{
    out << (m_label->hasName() ? m_label->getName() : "(unnamed label)") << ':';
}

void VormLabelLine::printListing(FILE* file)
{
    fprintf(file, "%s:\n", m_label->getName());
}

} // namespace vorp
