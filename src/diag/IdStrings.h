#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorp {

// The interned texts of a run: equal texts give the same pointer for as long as the table lives,
// so they can be compared by pointer and tokens can hold them without owning them. Texts are
// freed only with the table, which the run keeps to its end.
class IdStrings {
public:
    IdStrings();
    IdStrings(const IdStrings&) = delete;
    IdStrings& operator=(const IdStrings&) = delete;

    const char* idString(const char* text) { return intern(text ? std::string_view(text) : std::string_view()); }
    const char* idString(std::string_view text) { return intern(text); }
    // The decimal text of a number, interned. Folding a long sum makes a constant at every level,
    // and every entry of a data table is folded: the texts of values already seen are remembered,
    // so that each fold doesn't format and look up its number again.
    const char* numberText(unsigned value);
    // "<unknown>": the file at whose line 0 stand the lines and tokens the assembler makes itself.
    const char* generatedFile() const { return m_generatedFile; }

private:
    static constexpr std::size_t BLOCK_SIZE = 64 * 1024;
    static constexpr unsigned SMALL_NUMBERS = 4096;

    const char* intern(std::string_view text);
    // A copy of the text with a NUL behind it, in the table's memory.
    const char* copy(std::string_view text);
    char* allocate(std::size_t size);
    void grow();

    // The texts by hash, open addressed: a slot whose view has no data is free. One allocation
    // for all of them, so that a table of millions of names is also quickly given back.
    std::vector<std::string_view> m_slots;
    std::size_t m_used = 0;
    // Operators, punctuation and one-digit numbers are most of the tokens of a long expression:
    // one-byte texts skip the hash.
    const char* m_singles[256] = {};
    // So are the numbers of data tables, which are mostly of two and three digits: "00" to "99"
    // at 0 to 99, "000" to "999" at 100 to 1099.
    const char* m_numbers[1100] = {};
    // numberText's memory: small values, the most common, by index.
    const char* m_smallNumberTexts[SMALL_NUMBERS] = {};
    std::unordered_map<unsigned, const char*> m_numberTexts;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next = nullptr;
    std::size_t m_free = 0;
    const char* m_generatedFile;
};

} // namespace vorp
