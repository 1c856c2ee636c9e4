#include "diag/IdStrings.h"

#include <cstring>
#include <memory>
#include <unordered_set>
#include <vector>

namespace vorp {

namespace {

// Texts live in large blocks so that interning millions of short names costs few allocations.
class StringTable {
public:
    const char* intern(std::string_view text)
    {
        // Operators, punctuation and one-digit numbers are most of the tokens of a long
        // expression: one-byte texts skip the hash.
        if (text.size() == 1) {
            const char*& single = m_singles[static_cast<unsigned char>(text[0])];
            if (!single)
                single = insert(text);
            return single;
        }
        // So are the numbers of data tables, which are mostly of two and three digits.
        if (text.size() <= 3 && isDigit(text[0]) && isDigit(text[1]) && (text.size() == 2 || isDigit(text[2]))) {
            const std::size_t key = text.size() == 2 ? (text[0] - '0') * 10 + (text[1] - '0')
                                                     : 100 + (text[0] - '0') * 100 + (text[1] - '0') * 10 + (text[2] - '0');
            const char*& number = m_numbers[key];
            if (!number)
                number = insert(text);
            return number;
        }
        auto found = m_texts.find(text);
        if (found != m_texts.end())
            return found->data();
        return insert(text);
    }

private:
    static constexpr std::size_t BLOCK_SIZE = 64 * 1024;

    const char* insert(std::string_view text)
    {
        char* copy = allocate(text.size() + 1);
        if (!text.empty())
            std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
        m_texts.insert(std::string_view(copy, text.size()));
        return copy;
    }

    char* allocate(std::size_t size)
    {
        if (size > BLOCK_SIZE / 4) {
            m_blocks.push_back(std::make_unique<char[]>(size));
            return m_blocks.back().get();
        }
        if (m_free < size) {
            m_blocks.push_back(std::make_unique<char[]>(BLOCK_SIZE));
            m_next = m_blocks.back().get();
            m_free = BLOCK_SIZE;
        }
        char* result = m_next;
        m_next += size;
        m_free -= size;
        return result;
    }

    std::unordered_set<std::string_view> m_texts;
    const char* m_singles[256] = {};
    // "00" to "99" at 0 to 99, "000" to "999" at 100 to 1099.
    const char* m_numbers[1100] = {};

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next = nullptr;
    std::size_t m_free = 0;
};

StringTable& stringTable()
{
    static StringTable* table = new StringTable; // lives to the end of the run, like its texts
    return *table;
}

} // namespace

const char* IdStrings::idString(const char* text)
{
    return stringTable().intern(text ? std::string_view(text) : std::string_view());
}

const char* IdStrings::idString(std::string_view text)
{
    return stringTable().intern(text);
}

} // namespace vorp
