#pragma once

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace vorp {

// A stdio stream that writes into memory, for output that a caller takes as a whole.
class MemoryStream {
public:
    MemoryStream()
    {
        m_stream = open_memstream(&m_buffer, &m_size);
        if (!m_stream)
            throw std::bad_alloc();
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;
    ~MemoryStream()
    {
        if (m_stream)
            std::fclose(m_stream);
        std::free(m_buffer);
    }

    std::FILE* stream() const { return m_stream; }
    // Everything written so far; false when a write failed (out of memory).
    bool take(std::string& text)
    {
        const bool ok = std::fflush(m_stream) == 0 && !std::ferror(m_stream);
        text.assign(m_buffer ? m_buffer : "", m_size);
        return ok;
    }

private:
    std::FILE* m_stream = nullptr;
    char* m_buffer = nullptr;
    std::size_t m_size = 0;
};

} // namespace vorp
