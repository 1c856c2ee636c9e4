#include "metadata/ZebInfo.h"

#include "debug/DataWriter.h"
#include "model/VormAssembler.h"

namespace vorp {

namespace {

template <typename Record>
void deleteAll(std::vector<Record*>& records)
{
    for (Record* record : records)
        delete record;
    records.clear();
}

} // namespace

ZebInfo::~ZebInfo()
{
    deleteAll(branches);
    deleteAll(endpoints);
    deleteAll(labels);
    deleteAll(calls);
    deleteAll(threadStarts);
    deleteAll(threadStops);
    deleteAll(commands);
    deleteAll(systems);
    deleteAll(loops);
}

void ZebInfo::encode(VormAssembler&)
{
}

} // namespace vorp
