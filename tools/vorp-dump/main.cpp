// vorp-dump: prints an object file in a fixed text form, for reading and for golden tests.
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

const char* const p_usage = "usage: vorp-dump OBJECT\n"
                            "       vorp-dump --resolved OUTPUT OBJECT\n"
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
        text = vorp::ObjectDumper(elf).dump();
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "vorp-dump: cannot write the output\n");
        return 1;
    }
    return 0;
}
