// vorp-dump: prints an object file in a fixed text form, for reading and for golden tests.
#include "Disassembler.h"
#include "DumpErrorHandler.h"
#include "ObjectDumper.h"
#include "RelocationResolver.h"

#include "elf/ElfHandler.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

const char* const p_usage =
    "usage: vorp-dump OBJECT\n"
    "       vorp-dump -d|--disassemble [--reassemble] OBJECT\n"
    "       vorp-dump --resolved OUTPUT OBJECT\n"
    "  -d, --disassemble prints only the code sections (SHF_EXECINSTR) as instructions in the\n"
    "  default syntax: \"address: bytes  mnemonic operands\", labels where they stand, pc-relative\n"
    "  targets as address <label+offset>, operands a relocation fills by its symbol (its type in a\n"
    "  comment), bytes that are no instruction as .short/.word/.byte, jump tables in a comment\n"
    "  --reassemble, with -d, prints instead source that vorp assembles back to the same bytes in\n"
    "  every code section: instructions by format name, a label at every branch target\n"
    "  --resolved writes a copy of OBJECT with its data relocations applied, every\n"
    "  section at address 0, so that DWARF readers can decode its debug sections\n";

// Writes the resolved copy; prints how many relocations stayed unapplied.
int writeResolved(const char* output, const char* fileName)
{
    std::ifstream in(fileName, std::ios::binary);
    std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    vorp::DumpErrorHandler errors;
    vorp::ElfHandler elf(&errors, fileName);
    if (!in.good() && !in.eof()) {
        std::fprintf(stderr, "vorp-dump: cannot read object '%s'\n", fileName);
        return 1;
    }
    if (errors.numErrors() != 0) {
        std::fprintf(stderr, "vorp-dump: cannot read object '%s'\n", fileName);
        return 1;
    }
    vorp::RelocationResolver resolver(elf, std::move(bytes));
    const unsigned unapplied = resolver.resolve();
    std::ofstream out(output, std::ios::binary);
    out.write(reinterpret_cast<const char*>(resolver.getBytes().data()),
              static_cast<std::streamsize>(resolver.getBytes().size()));
    if (!out.good()) {
        std::fprintf(stderr, "vorp-dump: cannot write '%s'\n", output);
        return 1;
    }
    std::printf("%u relocations left unapplied\n", unapplied);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::fputs(p_usage, stdout);
        return 0;
    }
    if (argc == 4 && std::strcmp(argv[1], "--resolved") == 0)
        return writeResolved(argv[2], argv[3]);
    bool disassemble = false;
    bool reassemble = false;
    int first = 1;
    for (; first < argc - 1; ++first) {
        if (std::strcmp(argv[first], "-d") == 0 || std::strcmp(argv[first], "--disassemble") == 0)
            disassemble = true;
        else if (std::strcmp(argv[first], "--reassemble") == 0)
            reassemble = true;
        else
            break;
    }
    if (first != 1 && (!disassemble || first != argc - 1)) {
        std::fputs(p_usage, stderr);
        return 2;
    }
    argv += first - 1;
    argc -= first - 1;
    if (argc != 2 || argv[1][0] == '\0' || (argv[1][0] == '-' && argv[1][1] != '\0')) {
        std::fputs(p_usage, stderr);
        return 2;
    }
    const char* fileName = argv[1];

    std::string text;
    {
        vorp::DumpErrorHandler errors;
        vorp::ElfHandler elf(&errors, fileName);
        if (errors.numErrors() != 0) {
            std::fprintf(stderr, "vorp-dump: cannot read object '%s'\n", fileName);
            return 1;
        }
        if (disassemble) {
            const vorp::Tl3bDecoder decoder;
            const vorp::Disassembler disassembler(elf, decoder);
            text = reassemble ? disassembler.reassembly() : disassembler.listing();
        } else {
            text = vorp::ObjectDumper(elf).dump();
        }
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "vorp-dump: cannot write the output\n");
        return 1;
    }
    return 0;
}
