#pragma once

#include "diag/ErrorHandler.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

namespace vorp::elftest {

// Reports every error, as the object inspector's handler does, and never ends the run: the reader
// goes on after each problem it finds.
class ReportingErrorHandler : public ErrorHandler {
public:
    void fatalError(bool, const char* format, ...) override __attribute__((format(printf, 3, 4)))
    {
        va_list args;
        va_start(args, format);
        std::vfprintf(stderr, format, args);
        va_end(args);
    }
    void fatalVError(bool, const char* format, va_list args) override { std::vfprintf(stderr, format, args); }
};

inline std::string tempPath(const char* name)
{
    return testing::TempDir() + "vorp_elf_" + std::to_string(getpid()) + "_" + name;
}

inline std::vector<unsigned char> readBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void writeBytes(const std::string& path, const std::vector<unsigned char>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

inline std::uint32_t u32(const std::vector<unsigned char>& bytes, std::size_t at)
{
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + at, 4);
    return value;
}

inline std::uint16_t u16(const std::vector<unsigned char>& bytes, std::size_t at)
{
    std::uint16_t value = 0;
    std::memcpy(&value, bytes.data() + at, 2);
    return value;
}

inline void putU32(std::vector<unsigned char>& bytes, std::size_t at, std::uint32_t value)
{
    std::memcpy(bytes.data() + at, &value, 4);
}

// A section header field of a written file: word `field` of header `num`.
inline std::uint32_t shdr(const std::vector<unsigned char>& bytes, unsigned num, unsigned field)
{
    return u32(bytes, u32(bytes, 32) + 40 * num + 4 * field);
}

enum ShdrField { NAME, TYPE, FLAGS, ADDR, OFFSET, SIZE, LINK, INFO, ALIGN, ENTSIZE };

inline unsigned char* copyOf(const char* text, unsigned size)
{
    auto* data = new unsigned char[size];
    std::memcpy(data, text, size);
    return data;
}

// Collects what a display writes to a FILE.
class CapturedFile {
public:
    CapturedFile() { m_file = open_memstream(&m_buffer, &m_size); }
    ~CapturedFile()
    {
        if (m_file)
            fclose(m_file);
        free(m_buffer);
    }
    FILE* file() { return m_file; }
    std::string text()
    {
        fflush(m_file);
        return std::string(m_buffer, m_size);
    }

private:
    FILE* m_file = nullptr;
    char* m_buffer = nullptr;
    size_t m_size = 0;
};

} // namespace vorp::elftest
