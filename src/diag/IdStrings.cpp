#include "diag/IdStrings.h"

#include <cstring>
#include <functional>
#include <string>
#include <utility>

namespace vorp {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

IdStrings::IdStrings() : m_slots(1024), m_generatedFile(idString("<unknown>")) {}

const char* IdStrings::intern(std::string_view text)
{
    if (text.size() == 1) {
        const char*& single = m_singles[static_cast<unsigned char>(text[0])];
        if (!single)
            single = copy(text);
        return single;
    }
    if (text.size() >= 2 && text.size() <= 3 && isDigit(text[0]) && isDigit(text[1]) && (text.size() == 2 || isDigit(text[2]))) {
        const std::size_t key = text.size() == 2 ? (text[0] - '0') * 10 + (text[1] - '0')
                                                 : 100 + (text[0] - '0') * 100 + (text[1] - '0') * 10 + (text[2] - '0');
        const char*& number = m_numbers[key];
        if (!number)
            number = copy(text);
        return number;
    }
    if (2 * (m_used + 1) > m_slots.size())
        grow();
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>{}(text) & mask;
    while (m_slots[slot].data()) {
        if (m_slots[slot] == text)
            return m_slots[slot].data();
        slot = (slot + 1) & mask;
    }
    const char* result = copy(text);
    m_slots[slot] = std::string_view(result, text.size());
    ++m_used;
    return result;
}

void IdStrings::grow()
{
    const std::vector<std::string_view> previous = std::move(m_slots);
    m_slots.assign(previous.size() * 2, std::string_view());
    const std::size_t mask = m_slots.size() - 1;
    for (const std::string_view text : previous) {
        if (!text.data())
            continue;
        std::size_t slot = std::hash<std::string_view>{}(text) & mask;
        while (m_slots[slot].data())
            slot = (slot + 1) & mask;
        m_slots[slot] = text;
    }
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

const char* IdStrings::copy(std::string_view text)
{
    char* result = allocate(text.size() + 1);
    if (!text.empty())
        std::memcpy(result, text.data(), text.size());
    result[text.size()] = '\0';
    return result;
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
