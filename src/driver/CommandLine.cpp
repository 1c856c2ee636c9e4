#include "driver/CommandLine.h"

#include "diag/ErrorHandler.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vorp {

const char* const g_versionString = "0.1.0 (build 1)";
const char* const g_noticeString = "Copyright (C) 2026 The vorp developers. All rights reserved.";
const char* const g_supportString = "For bug reporting instructions, please see:\n"
                                    "<https://vorp.example.org/bugs>.";

namespace {

bool startsWith(const std::string& word, const char* prefix)
{
    return word.compare(0, std::strlen(prefix), prefix) == 0;
}

bool isWordCharacter(signed char c)
{
    return c >= 33 && c <= 126;
}

} // namespace

CommandLine::CommandLine(ErrorHandler& errorHandler) : m_errorHandler(errorHandler) {}

DriverOptions CommandLine::parse(const std::vector<std::string>& words)
{
    DriverOptions options;
    m_args = words;
    m_next = 0;
    m_remaining = m_args.size();

    while (m_remaining >= 1) {
        // A copy: reading a word file grows the list under us.
        const std::string word = m_args[m_next];
        std::size_t taken = 1;

        if (word == "-o") {
            if (m_remaining == 1)
                m_errorHandler.fatalError(true, "vorp: no output file specified for '-o' flag\n");
            options.outputName = m_args[m_next + 1];
            taken = 2;
        } else if (startsWith(word, "-march")) {
            if (word.size() < 7 || word[6] != '=')
                m_errorHandler.fatalError(true, "vorp: can't parse argument '%s'\n", word.c_str());
            const std::string arch = word.substr(7);
            if (arch != "tl3b")
                m_errorHandler.fatalError(true, "vorp: unknown architecture '%s'\n", arch.c_str());
        } else if (word == "-v") {
            options.verbose = true;
        } else if (startsWith(word, "-g")) {
            options.debugInfo = true;
            if (word.size() > 2) {
                const char* digits = word.c_str() + 2;
                char* rest = nullptr;
                const long level = std::strtol(digits, &rest, 10);
                if (*rest != '\0')
                    m_errorHandler.fatalError(true, "vorp: Unrecognised option  `%s'\n", word.c_str());
                options.debugInfo = level > 0;
            }
        } else if (word == "-version") {
            printVersion();
        } else if (word == "--version") {
            printVersion();
            std::exit(1);
        } else if (word == "-h" || word == "--help") {
            printUsage();
            std::exit(0);
        } else if (word == "-l" || word == "--listing") {
            options.listing = true;
        } else if (word == "-fschedule") {
            options.schedule = true;
        } else if (word == "-fno-schedule") {
            options.schedule = false;
        } else if (word == "-b") {
            if (m_remaining == 1)
                m_errorHandler.fatalError(true, "vorp: no output file specified for '-b' flag\n");
            options.binaryName = m_args[m_next + 1];
            options.binaryRequested = true;
            taken = 2;
        } else if (word == "--debug-schedule") {
            options.debugScheduling = true;
        } else if (word == "--detect-reg-overwrite") {
            options.schedule = true;
        } else if (!word.empty() && word[0] == '@') {
            readWordFile(word.substr(1));
        } else if (word == "-W" || m_args[0] == "--no-warn") {
            // Deliberately compared with the first word of the list, not with this one.
            options.showWarnings = false;
            options.fatalWarnings = false;
        } else if (word == "--warn") {
            options.showWarnings = true;
            options.fatalWarnings = false;
        } else if (word == "--fatal-warnings") {
            options.showWarnings = true;
            options.fatalWarnings = true;
        } else if (word == "--no-rewrite-debug") {
            options.rewriteDebug = false;
        } else if (word == "--warn-rewrite-debug") {
            options.warnRewriteDebug = true;
        } else if (word == "--max-encoding-passes") {
            if (m_remaining == 1)
                m_errorHandler.fatalError(true, "vorp: missing argument to --max-encoding-passes\n");
            const std::string& number = m_args[m_next + 1];
            char* rest = nullptr;
            errno = 0;
            const long long passes = std::strtoll(number.c_str(), &rest, 10);
            if (*rest != '\0' || errno == ERANGE || passes < 1 || passes > 0xFFFFFFFFLL)
                m_errorHandler.fatalError(true, "vorp: invalid argument to --max-encoding-passes\n");
            options.maxEncodingPasses = static_cast<std::uint32_t>(passes);
            taken = 2;
        } else if (word == "-") {
            options.inputFiles.push_back(word);
        } else if (!word.empty() && word[0] == '-') {
            m_errorHandler.fatalError(true, "vorp: Unrecognised option  `%s'\n", word.c_str());
        } else {
            options.inputFiles.push_back(word);
        }

        m_next += taken;
        m_remaining -= taken;
    }

    if (options.inputFiles.empty())
        options.inputFiles.push_back("-");
    if (options.outputName.empty())
        options.outputName = defaultOutputName(options.inputFiles.front());
    return options;
}

std::string CommandLine::defaultOutputName(const std::string& firstInput)
{
    if (firstInput == "-")
        return "a.o";
    const std::size_t dot = firstInput.rfind('.');
    return (dot == std::string::npos ? firstInput : firstInput.substr(0, dot)) + ".o";
}

void CommandLine::readWordFile(const std::string& fileName)
{
    FILE* file = std::fopen(fileName.c_str(), "r");
    if (!file)
        m_errorHandler.fatalError(true, "vorp: File \"%s\" does not exist for '@FILE'\n", fileName.c_str());

    // Words are runs of characters 33 to 126; everything else splits them. The end of the file
    // shows as the byte 255, so a real byte 255 ends the reading as well.
    std::string word;
    signed char c;
    do {
        c = static_cast<signed char>(std::fgetc(file));
        word.clear();
        if (isWordCharacter(c)) {
            while (isWordCharacter(c)) {
                word.push_back(static_cast<char>(c));
                c = static_cast<signed char>(std::fgetc(file));
            }
            m_args.push_back(word);
            ++m_remaining;
        }
    } while (static_cast<unsigned char>(c) != 255);
    std::fclose(file);
}

void CommandLine::printVersion() const
{
    m_errorHandler.fatalError(false, "%s\n", g_versionString);
    m_errorHandler.fatalError(false, "%s\n", g_noticeString);
}

void CommandLine::printUsage() const
{
    std::printf("TELK assembler - create a elf from one or more assembler files:\n"
                "  vorp INFILE+ [-o OUTFILE] [-march=ARCH] [-l] [-h]\n"
                "\n"
                "Options:\n"
                "   -h,--help                    Display this information\n"
                "   -o OBJFILE                   The name of the binary file to be created\n"
                "   -march=[tl3b]                Determines which ISA to target\n"
                "   -l,--listing                 Create a .txt output of the assembled code\n"
                "   -W,--no-warn                 Suppress warnings\n"
                "   --warn                       Don't suppres warnings\n"
                "   --fatal-warnings             Treat warnings as errors\n"
                "   --no-rewrite-debug           Don't rewrite debug information to allow elimination\n"
                "   --warn-rewrite-debug         Warn when debug information can't be rewritten\n"
                "   @FILE                        Read options from FILE\n"
                "   -v                           Use verbose messages\n"
                "   -version,--version           Print version information\n"
                "   -fschedule                   Enable instruction scheduling\n"
                "   -g                           Produce debug information\n"
                "\n"
                "   Any other arguments are taken as the input assembler files (normally .S)\n"
                "   %s\n",
                g_supportString);
}

} // namespace vorp
