#include "metadata/ZebInfo.h"

#include "debug/DataWriter.h"
#include "model/VormAssembler.h"

#include <cstdint>
#include <cstring>

namespace vorp {

namespace {

// The timing sections are not loaded: no flags, plain data.
VormSection* addTimingSection(VormAssembler& assembler, const char* name)
{
    return assembler.addSection(name, "", "progbits", 0, "", false);
}

// The layout ".zebcommand" and ".zebsystem" share: total size, version 0 and the first record's
// directory, then per record its leading text, file name and line number. Only one directory is
// written, so the size counts only that one.
template <typename Record>
void writeSourceTable(DataWriter& writer, const std::vector<Record*>& records,
                      const char* (Record::*leadingText)() const)
{
    const char* directory = records.front()->getCompilationDir();
    std::uint32_t size = static_cast<std::uint32_t>(std::strlen(directory)) + 9;
    for (const Record* record : records)
        size += static_cast<std::uint32_t>(std::strlen((record->*leadingText)()) + std::strlen(record->getFileName())) +
                6;
    writer.emitU32(size);
    writer.emitU32(0);
    writer.emitString(directory);
    for (const Record* record : records) {
        writer.emitString((record->*leadingText)());
        writer.emitString(record->getFileName());
        writer.emitU32(record->getLineNumber());
    }
}

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

void ZebInfo::encode(VormAssembler& assembler)
{
    // The order of the calls is the order of the sections in the object.
    encodeCommand(assembler);
    encodeSystem(assembler);
    encodeBranch(assembler);
    encodeLoop(assembler);
    encodeThread(assembler, threadStarts, ".zebthreadstart");
    encodeThread(assembler, threadStops, ".zebthreadstop");
    encodeMarker(assembler, endpoints, ".zebendpoint");
    encodeMarker(assembler, labels, ".zeblabel");
    encodeMarker(assembler, calls, ".zebcall");
}

void ZebInfo::encodeCommand(VormAssembler& assembler)
{
    if (commands.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, ".zebcommand"));
    writeSourceTable(writer, commands, &ZebCommand::getCommand);
}

void ZebInfo::encodeSystem(VormAssembler& assembler)
{
    if (systems.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, ".zebsystem"));
    writeSourceTable(writer, systems, &ZebSystem::getFunctionName);
}

void ZebInfo::encodeBranch(VormAssembler& assembler)
{
    if (branches.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, ".zebbranch"));
    for (const ZebBranch* branch : branches) {
        beginRecord(writer, branch->location, branch->guard);
        writer.emitReference(branch->location->getName());
        writer.emitReference(branch->target->getName(), branch->targetOffset);
        endRecord(writer, branch->guard);
    }
}

void ZebInfo::encodeLoop(VormAssembler& assembler)
{
    if (loops.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, ".zebloop"));
    for (const ZebLoop* loop : loops) {
        beginRecord(writer, loop->location, loop->guard);
        writer.emitReference(loop->location->getName());
        writer.emitU32(loop->count);
        endRecord(writer, loop->guard);
    }
}

void ZebInfo::encodeThread(VormAssembler& assembler, const std::vector<ZebThreadDelimiter*>& records,
                           const char* sectionName)
{
    if (records.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, sectionName));
    for (const ZebThreadDelimiter* record : records) {
        beginRecord(writer, record->location, record->guard);
        writer.emitReference(record->location->getName());
        endRecord(writer, record->guard);
    }
}

void ZebInfo::encodeMarker(VormAssembler& assembler, const std::vector<ZebMarker*>& records, const char* sectionName)
{
    if (records.empty())
        return;
    DataWriter writer(assembler, addTimingSection(assembler, sectionName));
    const std::string begin = std::string(".L") + sectionName + "_begin";
    const std::string end = std::string(".L") + sectionName + "_end";
    writer.emitLabel(begin);
    // A label difference rather than a constant: the size still holds when the linker drops
    // guarded records.
    writer.emitDifference(end, begin);
    writer.emitU32(0);
    // Only the first record's directory is written; the others are dropped.
    writer.emitString(records.front()->second);
    for (const ZebMarker* marker : records) {
        beginRecord(writer, marker->location, marker->guard);
        writer.emitReference(marker->location->getName());
        writer.emitString(marker->first);
        writer.emitString(marker->third);
        writer.emitU32(marker->value);
        endRecord(writer, marker->guard);
    }
    writer.emitLabel(end);
}

void ZebInfo::beginRecord(DataWriter& writer, const VormLabel* location, const VormLabel* guard)
{
    if (guard)
        writer.emitCCTop(genCCTopLabel(writer.getAssembler(), location->getName()), guard->getName());
}

void ZebInfo::endRecord(DataWriter& writer, const VormLabel* guard)
{
    if (guard)
        writer.emitCCBottom();
}

std::string ZebInfo::genCCTopLabel(VormAssembler& assembler, const std::string& name)
{
    return name + ".zeb." + std::to_string(assembler.nameCounters().zebRecords++);
}

} // namespace vorp
