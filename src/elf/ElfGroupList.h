#pragma once

#include <vector>

namespace vorp {

class ElfGroup;
class ElfHandler;

// The groups read from a file, in section order.
class ElfGroupList {
public:
    ElfGroupList() = default;
    ElfGroupList(const ElfGroupList&) = delete;
    ElfGroupList& operator=(const ElfGroupList&) = delete;
    virtual ~ElfGroupList();

    // Takes ownership.
    void addGroup(ElfGroup* group) { m_groups.push_back(group); }
    void postProcess(ElfHandler* elfHandler);
    const std::vector<ElfGroup*>& getGroups() const { return m_groups; }

private:
    std::vector<ElfGroup*> m_groups;
};

} // namespace vorp
