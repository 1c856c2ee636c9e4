#include "encoding/AssembleSupport.h"
#include "isa/Encoder.h"
#include "isa/EncoderFormat.h"
#include "isa/OperandDescriptor.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

using encoding_test::Assembled;
using encoding_test::assemble;
using encoding_test::bytesOf;

const auto DEFAULT = VormAssembler::SYNTAX_DEFAULT;
const auto ARCH = VormAssembler::SYNTAX_ARCHITECTURAL;

class TableTest : public testing::Test {
protected:
    ErrorHandler m_plain;
    TelkUtils m_utils{&m_plain};
    VorpErrorHandler m_errors;
    VormAssembler m_assembler{AssemblerOptions{.sourcePath = "a.S", .outputFile = "unused.o"}, &m_utils, &m_errors};

    // The format names of an encoder, in selection order.
    std::string formats(const char* name, VormAssembler::Syntax syntax) const
    {
        const Encoder* encoder = m_assembler.findEncoder(name, syntax);
        std::string text;
        for (unsigned i = 0; encoder && i < encoder->numFormats(); ++i)
            text += (i ? " " : "") + encoder->getFormat(i)->getName();
        return text;
    }
};

std::string rangesOf(const OperandDescriptor& desc)
{
    std::string text;
    for (const auto& [lo, hi] : desc.getRanges()) {
        text += (text.empty() ? "" : ",") + std::to_string(lo);
        if (hi != lo)
            text += ".." + std::to_string(hi);
    }
    return text;
}

// A format in the notation of the instruction table: the descriptors, then "|" flags "|" implicit
// reads "|" implicit writes. A mapped immediate shows ">", a label-allowed one "L".
std::string describe(const EncoderFormat& format)
{
    static const char* const names[] = {"r0", "r1", "r2",  "r3",  "r4",  "r5",  "r6", "r7", "r8",
                                        "r9", "r10", "r11", "cp", "dp", "sp", "lr", "sr", "ssr",
                                        "spc", "et", "ed", "sed", "kep", "ksp", "fx"};
    std::string text;
    for (unsigned i = 0; i < format.numDescriptors(); ++i) {
        const OperandDescriptor* desc = format.getDescriptor(i);
        text += i ? " " : "";
        if (desc->isReg()) {
            const auto* reg = static_cast<const OperandDescriptorReg*>(desc);
            text += std::string("r") + (reg->isDef() ? "d" : "") + (reg->isUse() ? "u" : "");
            if (rangesOf(*reg) != "0..11")
                text += "[" + rangesOf(*reg) + "]";
            continue;
        }
        const auto* imm = static_cast<const OperandDescriptorImm*>(desc);
        static const char* const modes[] = {"", " pc", " cp", " dp"};
        text += "i[" + rangesOf(*imm) + "]" + (imm->hasMap() ? ">" : "");
        if (imm->getScale())
            text += "<<" + std::to_string(imm->getScale());
        text += std::string(imm->isInverted() ? "-" : "") + modes[imm->getMode()] + (imm->isLabelAllowed() ? " L" : "");
    }
    text += std::string("|") + (format.isBranch() ? "B" : "") + (format.isLoad() ? "L" : "") +
            (format.isStore() ? "S" : "") + (format.isBarrier() ? "X" : "") + (format.isLink() ? "K" : "");
    std::string reads, writes;
    for (int r = 0; r < EncoderFormat::NUM_REGISTERS; ++r) {
        if (format.usesRegister(r))
            reads += (reads.empty() ? "" : " ") + std::string(names[r]);
        if (format.definesRegister(r))
            writes += (writes.empty() ? "" : " ") + std::string(names[r]);
    }
    return text + "|" + reads + "|" + writes;
}

TEST_F(TableTest, NameCounts)
{
    EXPECT_EQ(m_assembler.getEncoders(DEFAULT).size(), 331u);
    EXPECT_EQ(m_assembler.getEncoders(ARCH).size(), 385u);
    std::size_t plain = 0;
    for (const auto& entry : m_assembler.getEncoders(ARCH))
        plain += entry.first.find('_') == std::string::npos;
    EXPECT_EQ(plain, 176u);
}

struct Row {
    const char* name;      // the upper-case name that selects exactly this format
    const char* format;
    const char* signature; // default syntax
    const char* archSignature;
    const char* described;
    const char* zero;      // a line with every operand 0 (after mapping): it encodes as the base
    const char* base;
};

const Row rows[] = {
    {"ASHRI_l2rus", "ASHR_l2rus", "%r,%r,%i", "%r,%r,%i", "rd ru i[32,1..8,16,24,32]>|||",
     "ASHRI_l2rus r0, r0, 32", "00 F8 EC 97 "},
    {"BLACP_u10", "BLACP_u10", "cp[%i]", "%i", "i[0..1023]<<2 cp L|BLK|cp fx|lr fx", "BLACP_u10 cp[0]", "00 E0 "},
    {"BRBU_u6", "BRBU_u6", "%i", "%i", "i[0..63]<<1- pc L|B|fx|fx", "BRBU_u6 0", "00 77 "},
    {"LDWCP_lru6", "LDWCP_lru6", "%r,cp[%i]", "%r,%i", "rd[0..15] i[0..65535]<<2 cp L|L|cp fx|fx",
     "LDWCP_lru6 r0, cp[0]", "00 F0 00 6C "},
    {"KRET_0r", "KRET_0r", "", "", "|B|ssr spc sed fx|sr ed fx", "KRET_0r", "FD 07 "},
    {"STSED_0r", "STSED_0r", "sed,sp[3]", "", "|S|sp ed fx|fx", "STSED_0r sed, sp[3]", "FC 0F "},
    {"LDSED_0r", "LDSED_0r", "sed,sp[3]", "", "|L|sp fx|sed fx", "LDSED_0r sed, sp[3]", "FD 17 "},
    {"CRC8_l4r", "CRC8_l4r", "%r,%r,%r,%r", "%r,%r,%r,%r", "rdu rd ru ru|||", "CRC8_l4r r0, r0, r0, r0",
     "00 F8 E0 07 "},
    {"INPW_l2rus", "INPW_l2rus", "%r,res[%r],%i", "%r,%r,%i", "rd ru i[32,1..8,16,24,32]>||sr fx|fx",
     "INPW_l2rus r0, res[r0], 32", "00 F8 EE 97 "},
    {"TINITLR_l2r", "TINITLR_l2r", "t[%r]:lr,%r", "%r,%r", "ru ru||fx|lr fx", "TINITLR_l2r t[r0]:lr, r0",
     "C0 FE EC 17 "},
    {"LDAPF_u10", "LDAPF_u10", "r11,%i", "%i", "i[0..1023]<<1 pc L|||r11", "LDAPF_u10 r11, 0", "00 D8 "},
    {"SETCI_lru6", "SETC_lru6", "res[%r],%i", "%r,%i", "ru i[0..65535]||sr fx|fx", "SETCI_lru6 res[r0], 0",
     "00 F0 00 E8 "},
    {"MACCS_l4r", "MACCS_l4r", "%r,%r,%r,%r", "%r,%r,%r,%r", "rdu rdu ru ru|||", "MACCS_l4r r0, r0, r0, r0",
     "00 F8 E0 0F "},
};

TEST_F(TableTest, RowsMatchTheTable)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Encoder* plain = m_assembler.findEncoder(row.name, DEFAULT);
        const Encoder* arch = m_assembler.findEncoder(row.name, ARCH);
        ASSERT_TRUE(plain && arch);
        ASSERT_EQ(plain->numFormats(), 1u);
        ASSERT_EQ(arch->numFormats(), 1u);
        const EncoderFormat& format = *plain->getFormat(0);
        EXPECT_EQ(format.getName(), row.format);
        EXPECT_EQ(format.getSignature(), row.signature);
        EXPECT_EQ(arch->getFormat(0)->getName(), row.format);
        EXPECT_EQ(arch->getFormat(0)->getSignature(), row.archSignature);
        EXPECT_EQ(describe(format), row.described);
        EXPECT_EQ(describe(*arch->getFormat(0)), row.described);
        // The size follows from the layout: a long form has two halfwords.
        EXPECT_EQ(format.getNumBytes(), static_cast<int>(std::string(row.base).size() / 3));
        EXPECT_EQ(bytesOf(row.zero + std::string("\n")), row.base);
    }
}

TEST_F(TableTest, ShiftCountsMapToCodes)
{
    for (const char* name : {"ASHRI_l2rus", "INPW_l2rus"}) {
        const OperandDescriptor* count = m_assembler.findEncoder(name, DEFAULT)->getFormat(0)->getDescriptor(2);
        EXPECT_EQ(count->map(32), 0);
        EXPECT_EQ(count->map(1), 1);
        EXPECT_EQ(count->map(8), 8);
        EXPECT_EQ(count->map(16), 9);
        EXPECT_EQ(count->map(24), 10);
    }
}

TEST_F(TableTest, LabelOperandsCarryTheirRelocationType)
{
    // A cp-relative label is left to the linker: type 7 for the lu10 form, 6 for u10. v is at 8.
    Assembled call = assemble("BLACP_lu10 cp[v]\nBLACP_u10 cp[v]\nnop\nv: nop\n");
    EXPECT_EQ(call.bytes, "00 F0 00 E0 00 E0 00 90 00 90 ");
    EXPECT_EQ(call.relocations, "7@0:v+0 6@4:v+0 ");
    // ldap: forward 2 bytes from the end of the short form is 1 halfword, D800 + 1, type 10.
    Assembled address = assemble("ldap r11, v\nnop\nv: nop\n");
    EXPECT_EQ(address.bytes, "01 D8 00 90 00 90 ");
    EXPECT_EQ(address.relocations, "10@0:v+0 ");
    // A wide register fits LDWCP_lru6: lr is 15, 6C00 + 15 << 6.
    EXPECT_EQ(bytesOf("LDWCP_lru6 lr, cp[0]\n"), "00 F0 C0 6F ");
}

TEST_F(TableTest, SelectionOrder)
{
    EXPECT_EQ(formats("bu", DEFAULT), "BRBU_u6 BRFU_u6 BRBU_lu6 BRFU_lu6");
    EXPECT_EQ(formats("bl", DEFAULT), "BLRB_u10 BLRF_u10 BLRB_lu10 BLRF_lu10");
    EXPECT_EQ(formats("ldw", DEFAULT), "LDET_0r LDSED_0r LDSPC_0r LDSSR_0r LDW_3r LDW_2rus LDWSP_ru6 LDWDP_ru6 "
                                       "LDWCP_ru6 LDWCPL_u10 LDWSP_lru6 LDWDP_lru6 LDWCP_lru6 LDWCPL_lu10");
    EXPECT_EQ(formats("ldaw", DEFAULT), "LDAWDP_ru6 LDAWSP_ru6 LDAWCP_u6 LDAWF_l3r LDAWF_l2rus LDAWB_l3r "
                                        "LDAWB_l2rus LDAWDP_lru6 LDAWSP_lru6 LDAWCP_lu6");
    EXPECT_EQ(formats("set", DEFAULT), "SETCP_1r SETDP_1r SETKEP_0r SETSP_1r TSETR_3r SETPS_lr2r");
    // Architectural prefixes gather the names up to the underscore, short forms first.
    EXPECT_EQ(formats("BLACP", ARCH), "BLACP_u10 BLACP_lu10");
    EXPECT_EQ(formats("LDWCP", ARCH), "LDWCP_ru6 LDWCP_lru6");
    EXPECT_EQ(formats("LDWCPL", ARCH), "LDWCPL_u10 LDWCPL_lu10");
    EXPECT_EQ(formats("KCALL", ARCH), "KCALL_1r");
    EXPECT_EQ(formats("KCALLI", ARCH), "KCALL_u6 KCALL_lu6");
    EXPECT_EQ(formats("SETC", ARCH), "SETC_l2r");
    EXPECT_EQ(formats("LDAWFI", ARCH), "LDAWF_l2rus");
    EXPECT_EQ(formats("BLACP", DEFAULT), "");
}

} // namespace
} // namespace vorp
