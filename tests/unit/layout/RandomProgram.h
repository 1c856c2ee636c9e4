#pragma once

// Random programs full of what the size iteration has to decide: branches of every kind at
// distances near the ends of their short forms, forward and backward, alignment, jump tables whose
// trampolines may or may not be needed, elimination blocks, data in code, several sections and
// scheduled code. Every program assembles cleanly (given enough passes): branch targets exist,
// code stays on even addresses, nothing is out of reach of the long forms.

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace vorp::test {

class RandomProgram {
public:
    explicit RandomProgram(unsigned seed) : m_random(seed) {}

    std::string generate(int lines)
    {
        m_text.clear();
        const int sections = pick(1, 3);
        for (int s = 0; s < sections; ++s) {
            if (s == 0)
                m_text += "\t.text\n";
            else
                m_text += "\t.section .text.s" + std::to_string(s) + ", \"ax\", @progbits\n";
            if (chance(0.2))
                m_text += "\t.scheduling on\n";
            const int functions = pick(1, 6);
            for (int f = 0; f < functions; ++f)
                function(lines / sections / functions + 1, s, f);
            if (chance(0.3))
                m_text += "\t.scheduling off\n";
        }
        return m_text;
    }

private:
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(m_random); }
    bool chance(double p) { return std::uniform_real_distribution<double>(0, 1)(m_random) < p; }
    std::string reg() { return "r" + std::to_string(pick(0, 11)); }

    void function(int lines, int section, int index)
    {
        const std::string name = "s" + std::to_string(section) + "f" + std::to_string(index);
        const bool block = chance(0.5);
        if (block)
            m_text += "\t.cc_top " + name + ".function, " + name + "\n";
        if (chance(0.5))
            m_text += "\t.align " + std::to_string(2 << pick(0, 3)) + "\n";
        m_text += name + ":\n";
        // Some functions are dense with branches over each other: their short forms wait on each
        // other, which makes long runs of passes and stalemates for force to break.
        const double branches = chance(0.3) ? 0.6 : 0.22;
        const int labels = std::max(2, lines / (branches > 0.5 ? pick(1, 3) : pick(3, 12)));
        std::vector<int> at;
        for (int i = 0; i < labels; ++i)
            at.push_back(pick(0, lines));
        std::sort(at.begin(), at.end());
        std::size_t next = 0;
        auto label = [&](int k) { return ".L" + name + "_" + std::to_string(k); };
        for (int i = 0; i <= lines; ++i) {
            while (next < at.size() && at[next] == i) {
                m_text += label(static_cast<int>(next)) + ":\n";
                ++next;
            }
            // Mostly near labels, so that short forms are in play; sometimes any.
            auto target = [&] {
                if (chance(0.7)) {
                    const int near = static_cast<int>(next) + pick(-2, 2);
                    return label(std::clamp(near, 0, labels - 1));
                }
                return label(pick(0, labels - 1));
            };
            const double r = std::uniform_real_distribution<double>(0, 1)(m_random);
            if (r < branches) {
                const int kind = pick(0, 2);
                // Now and then the target has an addend: the distance moves with it.
                const std::string addend = chance(0.01) ? "+2" : "";
                if (kind == 0)
                    m_text += "\tbu " + target() + addend + "\n";
                else
                    m_text += std::string(kind == 1 ? "\tbt " : "\tbf ") + reg() + ", " + target() + addend + "\n";
            } else if (r < 0.30) {
                m_text += "\tadd " + reg() + ", " + reg() + ", " + reg() + "\n";
            } else if (r < 0.40) {
                m_text += "\tldc " + reg() + ", " + std::to_string(chance(0.5) ? pick(0, 63) : pick(64, 60000)) + "\n";
            } else if (r < 0.68) {
                // Filler that puts targets near the ends of the short ranges.
                const int bytes = chance(0.5) ? pick(50, 70) * 2 : pick(0, 1100) * 2;
                m_text += "\t.skip " + std::to_string(bytes) + "\n";
            } else if (r < 0.72) {
                m_text += "\t.align " + std::to_string(chance(0.9) ? 2 << pick(0, 2) : 32 << pick(0, 2)) + "\n";
            } else if (r < 0.76) {
                std::string table = chance(0.8) ? "\t.jmptable " : "\t.jmptable32 ";
                const int entries = pick(1, 8);
                for (int e = 0; e < entries; ++e)
                    table += (e ? ", " : "") + target();
                m_text += table + "\n";
            } else if (r < 0.80) {
                // A call to a label of this function is pc-relative too, with other ranges.
                m_text += chance(0.3) ? "\tbl " + target() + "\n" : "\tbl s" + std::to_string(pick(0, section)) + "f0\n";
            } else if (r < 0.83) {
                m_text += chance(0.5) ? "\t.word 1, 2\n" : "\t.short 7\n";
            } else if (r < 0.86) {
                m_text += "\tldw " + reg() + ", sp[" + std::to_string(pick(0, 70)) + "]\n";
            } else {
                m_text += "\tsub " + reg() + ", " + reg() + ", " + std::to_string(pick(0, 11)) + "\n";
            }
        }
        m_text += "\tretsp 0\n";
        if (block)
            m_text += "\t.cc_bottom " + name + ".function\n";
    }

    std::mt19937 m_random;
    std::string m_text;
};

} // namespace vorp::test
