#pragma once

namespace vorp {

// One name in the string table, with its place in the table.
class ElfString {
public:
    // Keeps a private copy of `name`; getName() is null if there was no memory for it.
    ElfString(const char* name, unsigned offset);
    ElfString(const ElfString&) = delete;
    ElfString& operator=(const ElfString&) = delete;
    virtual ~ElfString();

    const char* getName() const { return m_name; }
    unsigned getOffset() const { return m_offset; }

private:
    char* m_name;
    unsigned m_offset;
};

} // namespace vorp
