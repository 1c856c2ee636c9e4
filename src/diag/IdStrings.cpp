#include "diag/IdStrings.h"

#include <cstring>
#include <string>

namespace vorp {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

IdStrings::IdStrings() : m_generatedFile(idString("<unknown>")) {}

const char* IdStrings::intern(std::string_view text)
{
    if (text.size() == 1) {
        const char*& single = m_singles[static_cast<unsigned char>(text[0])];
        if (!single)
            single = insert(text);
        return single;
    }
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

const char* IdStrings::numberText(unsigned value)
{
    const char** text = nullptr;
    if (value < SMALL_NUMBERS)
        text = &m_smallNumberTexts[value];
    else
        text = &m_numberTexts.try_emplace(value, nullptr).first->second;
    if (!*text)
        *text = idString(std::to_string(value));
    return *text;
}

const char* IdStrings::insert(std::string_view text)
{
    char* copy = allocate(text.size() + 1);
    if (!text.empty())
        std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    m_texts.insert(std::string_view(copy, text.size()));
    return copy;
}

char* IdStrings::allocate(std::size_t size)
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

} // namespace vorp
