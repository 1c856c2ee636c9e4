#pragma once

#include <cstdio>
#include <cstring>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vorp {

class ElfSectionHeader;
class ElfString;
class ErrorHandler;

// The file's one string table, ".strtab". Section names and symbol names share it; identical names
// are stored once, and nothing else is merged (a name that is the tail of another gets its own
// entry). Offsets of strings never change once given.
class ElfStrings {
public:
    // A new table holding only the empty string at offset 0.
    explicit ElfStrings(ErrorHandler* errorHandler);
    // Reads `sh_size` bytes at the stream's position and enters every string in them.
    ElfStrings(ErrorHandler* errorHandler, std::istream& in, const ElfSectionHeader* header);
    ElfStrings(const ElfStrings&) = delete;
    ElfStrings& operator=(const ElfStrings&) = delete;
    virtual ~ElfStrings();

    // The string of that name, new or existing; null only if there was no memory.
    ElfString* add(const char* name);
    ElfString* find(const char* name) const;
    // A copy of the zero-terminated bytes at `offset`; empty if the offset is outside the table.
    std::string getString(unsigned offset) const;
    // The bytes at `offset` in the running copy of the table, or null outside it. The pointer is
    // good until the next add().
    const char* getEntry(unsigned offset) const;
    unsigned numBytes() const { return m_numBytes; }
    unsigned numStrings() const { return static_cast<unsigned>(m_stringOrder.size()); }

    // With false: rebuilds the running copy with room to grow and returns it (still owned here).
    // With true: returns a new array of exactly numBytes() bytes for the file, owned by the caller.
    unsigned char* createBuffer(bool forFile);

    void display(FILE* out = stdout) const;

private:
    struct NameLess {
        bool operator()(const char* a, const char* b) const { return std::strcmp(a, b) < 0; }
    };

    void fillBuffer(unsigned char* buffer) const;

    std::map<const char*, ElfString*, NameLess> m_stringMap; // first string of each name
    std::vector<std::unique_ptr<ElfString>> m_stringOrder;    // every string, in table order
    unsigned m_numBytes = 0;
    unsigned char* m_buffer = nullptr;
    unsigned m_bufferSize = 0;
    ErrorHandler* m_errorHandler;
};

} // namespace vorp
