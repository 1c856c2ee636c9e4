#pragma once

#include <string>

namespace vorp {

// One kind of trace output: on or off, with the text printed before a prefixed trace line.
class TraceType {
public:
    virtual ~TraceType() = default;

    void turnOn() { m_on = true; }
    void turnOff() { m_on = false; }
    bool isOn() const { return m_on; }
    const char* getTraceString() const { return m_text.c_str(); }
    void setTraceString(const char* text) { m_text = text ? text : ""; }

private:
    bool m_on = false;
    std::string m_text;
};

} // namespace vorp
