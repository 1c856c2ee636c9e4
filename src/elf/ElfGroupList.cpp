#include "elf/ElfGroupList.h"

#include "elf/ElfGroup.h"

namespace vorp {

ElfGroupList::~ElfGroupList()
{
    for (ElfGroup* group : m_groups)
        delete group;
}

void ElfGroupList::postProcess(ElfHandler* elfHandler)
{
    for (ElfGroup* group : m_groups)
        group->postProcess(elfHandler);
}

} // namespace vorp
