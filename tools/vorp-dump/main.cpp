// vorp-dump: prints an object file in a fixed text form, for reading and for golden tests.
#include "DumpErrorHandler.h"
#include "ObjectDumper.h"

#include "elf/ElfHandler.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

const char* const p_usage = "usage: vorp-dump OBJECT\n";

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::fputs(p_usage, stdout);
        return 0;
    }
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
