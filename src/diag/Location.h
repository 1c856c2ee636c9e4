#pragma once

#include <cstdio>

namespace vorp {

// Where a message belongs. A line location prints "file:line: "; the absence of one prints nothing.
class Location {
public:
    virtual ~Location() = default;
    virtual void write(FILE* out) const = 0;
    bool hasLine() const { return m_kind == 1; }

protected:
    explicit Location(int kind) : m_kind(kind) {}
    Location(const Location&) = default;
    Location& operator=(const Location&) = default;

private:
    int m_kind;
};

class LineLocation : public Location {
public:
    LineLocation(const char* file, unsigned line) : Location(1), m_file(file), m_line(line) {}
    void write(FILE* out) const override;
    const char* getFile() const { return m_file; }
    unsigned getLine() const { return m_line; }

private:
    const char* m_file;
    unsigned m_line;
};

class NoLocation : public Location {
public:
    NoLocation() : Location(0) {}
    void write(FILE*) const override {}
};

} // namespace vorp
