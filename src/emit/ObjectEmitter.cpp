#include "emit/ObjectEmitter.h"

#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "elf/ElfHandler.h"
#include "elf/ElfRelocationTable.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfSymbolTable.h"
#include "metadata/NoteMemo.h"
#include "debug/EliminationBlocks.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormAssembler.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormLabel.h"
#include "model/VormLine.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace vorp {

namespace {

// Linker expression kinds written here.
constexpr std::int32_t EXPR_ALIAS = 65;
constexpr std::int32_t EXPR_TYPE_STRING = 2370;
constexpr std::int32_t EXPR_BLOCK_EDGE = 2753;

unsigned char elfBindingForSymbol(const VormLabel* label)
{
    switch (label->getVisibility()) {
    case VISIBILITY_GLOBAL: return ElfHandler::STB_GLOBAL;
    case VISIBILITY_WEAK: return ElfHandler::STB_WEAK;
    case VISIBILITY_LOCAL: return ElfHandler::STB_LOCAL;
    default: assert(0 && "Unknown visibility"); return 0;
    }
}

void putWord(unsigned char* out, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<unsigned char>(value >> (8 * i));
}

} // namespace

bool ObjectEmitter::addSectionToElfFile(const VormSection* section) const
{
    if (section->getSize() != 0)
        return true;
    for (const auto& label : m_assembler.getLabels().getAllLabels()) {
        if (label->getTargetLine() && label->getTargetLine()->getSection() == section)
            return true;
    }
    return false;
}

bool ObjectEmitter::dumpBinary(const char* sourceName, std::vector<std::uint8_t>& object, ObjectWriter* writer)
{
    const auto& sections = m_assembler.getSections();
    VormLinkerExps& exps = m_assembler.getLinkerExps();

    for (const auto& section : sections)
        EliminationBlocks::addEliminationBlocks(m_assembler, section.get());

    // The default alignment is worked out and then replaced by that of the align lines: the
    // linker has always been given the latter.
    std::vector<std::uint32_t> alignments(sections.size(), 1);
    // Owned here until the ELF file takes them: an error that ends the run while lines are encoded
    // unwinds through this.
    std::vector<std::unique_ptr<unsigned char[]>> buffers(sections.size());
    for (std::size_t i = 0; i < sections.size(); ++i) {
        VormSection* section = sections[i].get();
        bool scheduled = false;
        for (const VormLine* line : section->getLines())
            scheduled = scheduled || line->getSchedule();
        alignments[i] = m_assembler.getDefaultAlignment(section, scheduled);
    }
    for (std::size_t i = 0; i < sections.size(); ++i) {
        VormSection* section = sections[i].get();
        std::uint32_t alignment = 1;
        if (section->getType() == VormSection::NOBITS) {
            // The object holds no bytes of this section, which may be as large as the address
            // space: each line is encoded on its own, for its relocations, and space and padding,
            // which have none, not at all.
            std::vector<unsigned char> scratch;
            for (VormLine* line : section->getLines()) {
                if (line->getType() == ALIGN_LINE)
                    alignment = std::max(alignment, static_cast<VormAlignDirectiveLine*>(line)->getAlignment());
                if (line->getType() == ALIGN_LINE || line->getType() == SKIP_LINE)
                    continue;
                scratch.assign(std::max<std::uint32_t>(line->getNumBytes(), 1), 0);
                line->encode(scratch.data(), section->getRelocations(), m_assembler, m_assembler.getErrorHandler());
            }
            alignments[i] = alignment;
            continue;
        }
        buffers[i] = std::make_unique<unsigned char[]>(section->getSize() ? section->getSize() : 1);
        unsigned char* out = buffers[i].get();
        for (VormLine* line : section->getLines()) {
            line->encode(out, section->getRelocations(), m_assembler, m_assembler.getErrorHandler());
            out += line->getNumBytes();
            if (line->getType() == ALIGN_LINE)
                alignment = std::max(alignment, static_cast<VormAlignDirectiveLine*>(line)->getAlignment());
        }
        alignments[i] = alignment;
    }

    ElfHandler elf(m_assembler.getUtils()->errorHandler, ElfHandler::ET_REL);
    std::map<const VormSection*, unsigned> elfNumbers;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        VormSection* section = sections[i].get();
        if (!addSectionToElfFile(section))
            continue;
        const char* name = section->getName().c_str();
        unsigned number = 0;
        switch (section->getType()) {
        case VormSection::PROGBITS:
            number = elf.addProgbitsSection(0, section->getSize(), buffers[i].release(), name, section->getFlags(),
                                            alignments[i], section->getEntrySize());
            break;
        case VormSection::NETINFO:
            number = elf.addNetinfoSection(0, section->getSize(), buffers[i].release(), name, section->getFlags(),
                                           alignments[i], section->getEntrySize());
            break;
        case VormSection::NOBITS:
            number = elf.addNobitsSection(0, section->getSize(), name, section->getFlags(), alignments[i],
                                          section->getEntrySize());
            break;
        default:
            assert(0 && "Unknown section type");
        }
        elfNumbers[section] = number;
    }

    for (const auto& group : m_assembler.getSectionGroups())
        elf.addAbsoluteSymbol(group.first.c_str(), 0, ElfHandler::STB_WEAK, ElfHandler::STT_NOTYPE, 0);

    const std::string& fileName = m_assembler.getFilename();
    if (!fileName.empty())
        elf.addAbsoluteSymbol(fileName.c_str(), 0, ElfHandler::STB_LOCAL, ElfHandler::STT_FILE, 0);
    else if (sourceName)
        elf.addAbsoluteSymbol(sourceName, 0, ElfHandler::STB_LOCAL, ElfHandler::STT_FILE, 0);

    for (const auto& label : m_assembler.getLabels().getAllLabels()) {
        VormLabel* resolved = label->getLabelFollowAliases();
        const VormSection* section = resolved->getSection();
        const auto found = section ? elfNumbers.find(section) : elfNumbers.end();
        addLabelSymbol(elf, label.get(), found == elfNumbers.end() ? 0 : found->second);
    }

    for (const auto& section : sections) {
        const Relocations& relocations = section->getRelocations();
        if (relocations.numRelocationEntries() == 0)
            continue;
        ElfRelocationTable* table = elf.newRelocationTable();
        for (std::size_t r = 0; r < relocations.numRelocationEntries(); ++r) {
            const std::uint32_t symbolNumber = relocations.relocationEntrySym(r)->getSymbolNumber();
            assert(symbolNumber != 0);
            table->addRelocation(relocations.relocationEntryAddress(r),
                                 static_cast<unsigned char>(relocations.relocationEntryType(r)), symbolNumber,
                                 relocations.relocationEntryAddEnd(r));
        }
        elf.addRelocations(elfNumbers[section.get()], table);
    }

    const auto& expressions = exps.getExpressions();
    auto* exprData = new unsigned char[expressions.empty() ? 1 : 20 * expressions.size()]();
    for (std::size_t i = 0; i < expressions.size(); ++i) {
        const VormLinkerExps::Expression& e = *expressions[i];
        unsigned char* record = exprData + 20 * i;
        putWord(record, static_cast<std::uint32_t>(e.kind));
        putWord(record + 4, e.label->getSymbolNumber());
        for (std::uint32_t op = 0; op < e.numOps; ++op) {
            const VormLinkerExps::Operand& operand = e.ops[op];
            std::uint32_t word = 0;
            switch (operand.type) {
            case VormLinkerExps::OPERAND_CONSTANT:
                word = static_cast<std::uint32_t>(operand.constant);
                break;
            case VormLinkerExps::OPERAND_SYMBOL:
                word = operand.symbol->getSymbolNumber();
                break;
            case VormLinkerExps::OPERAND_STRING:
                word = elf.addString(operand.string ? operand.string : "")->getOffset();
                break;
            default:
                assert(0 && "Unknown op type");
            }
            putWord(record + 8 + 4 * op, word);
        }
    }
    elf.addExprSection(0, static_cast<unsigned>(20 * expressions.size()), exprData, ".expr", 0, 4, 4);

    for (const NoteMemo& note : m_notes)
        elf.addNoteSection(".telknote", static_cast<std::uint32_t>(note.getKind()), note.getText().data(),
                           static_cast<unsigned>(note.getText().size()));

    for (const auto& [signature, members] : m_assembler.getSectionGroups()) {
        auto* words = new unsigned char[4 * (members.size() + 1)]();
        const VormSection* first = m_assembler.findSection(members.front());
        putWord(words, first && first->isComdat() ? 1 : 0);
        for (std::size_t m = 0; m < members.size(); ++m) {
            std::uint32_t number = 0x7FFFFFFF;
            for (const ElfSectionHeader* header : elf.getSectionHeaders()) {
                if (header->getName(elf.getStrings()) == members[m]) {
                    number = header->getNum();
                    break;
                }
            }
            putWord(words + 4 * (m + 1), number);
        }
        const unsigned groupSection = elf.addGroupSection(static_cast<unsigned>(4 * (members.size() + 1)), words);
        elf.getSectionHeader(groupSection)->sh_info = elf.getSymbolTable()->findNumByName(signature.c_str());
    }

    // The symbol and string tables come with the writing.
    const std::size_t sectionCount = elf.getSectionHeaders().size() + 2;
    if (sectionCount > ElfHandler::SHN_LORESERVE) {
        m_assembler.getUtils()->errorHandler->fatalError(
            false, "vorp: Error: the object would need %zu sections, more than the %u an ELF file can number\n",
            sectionCount, ElfHandler::SHN_LORESERVE);
        return false;
    }
    if (writer) {
        if (!elf.write([writer](const void* data, std::size_t size) { return writer->write(data, size); }))
            return false;
    } else {
        elf.write(object);
    }
    m_assembler.statistics().objectBytes = elf.bytesWritten();
    return true;
}

void ObjectEmitter::addLabelSymbol(ElfHandler& elf, VormLabel* label, unsigned sectionNumber)
{
    VormLinkerExps& exps = m_assembler.getLinkerExps();
    const char* name = label->getName();
    const std::uint32_t size = label->getSize();
    const unsigned char type = label->getElfType();
    const std::string typeString = label->getTypeString();
    const unsigned char binding = elfBindingForSymbol(label);
    VormLabel* resolved = label->getLabelFollowAliases();

    unsigned symbol = 0;
    switch (resolved->getSymbolType()) {
    case SYMBOL_DEFINED:
    case SYMBOL_ALIGN: {
        symbol = elf.addSymbol(name, resolved->getValue(), static_cast<Elf32_Half>(sectionNumber), binding, type,
                               size);
        // A label at the edge of an elimination block goes with the block's code.
        if (const VormCCDirectiveLine* bottom = resolved->getCCBottom()) {
            const VormCCDirectiveLine* top = bottom->getTop();
            if (resolved->getValue() == bottom->getAddress().min)
                exps.addExp(EXPR_BLOCK_EDGE, label).addSymOp(top->getLabel());
            if (resolved->getValue() == top->getAddress().min)
                exps.addExp(EXPR_BLOCK_EDGE, label).addSymOp(top->getLabel());
        }
        break;
    }
    case SYMBOL_REQUIRED:
        if (resolved == label) {
            // The size goes in as the symbol type, and the type is dropped: linkers expect it.
            symbol = elf.addUndefinedSymbol(name, binding, static_cast<unsigned char>(size & 0xFF), 0);
        } else {
            symbol = elf.addAbsoluteSymbol(name, 0, binding, type, size);
            exps.addExp(EXPR_ALIAS, label).addSymOp(resolved);
        }
        break;
    case SYMBOL_TENTATIVE:
        return;
    case SYMBOL_ABSOLUTE:
        symbol = elf.addAbsoluteSymbol(name, resolved->getValue(), binding, type, size);
        break;
    case SYMBOL_ALIAS:
        symbol = elf.addAbsoluteSymbol(name, 0, binding, type, size);
        exps.addExp(EXPR_ALIAS, label).addSymOp(resolved->getAliasedLabel());
        break;
    case SYMBOL_LINKSET:
        symbol = elf.addAbsoluteSymbol(name, 0, binding, type, size);
        if (resolved != label)
            exps.addExp(EXPR_ALIAS, label).addSymOp(resolved);
        break;
    default:
        assert(0);
    }
    if (!typeString.empty())
        exps.addExp(EXPR_TYPE_STRING, label).addStrOp(typeString.c_str());
    label->setSymbolNumber(symbol);
}

} // namespace vorp
