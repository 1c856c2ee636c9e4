#!/usr/bin/env python3
"""Writes a large, compiler-like input for vorp and the equivalent Thumb input for llvm-mc.

usage: gen.py LINES OUT.S [--loc] [--thumb OUT.s] [--chain N] [--alias N]

The output is deterministic: the same arguments always give the same text. Functions sit in
elimination blocks with .globl/.type/.size; the body mix is about 55% ALU and constants, 20% loads
and stores, 15% branches to local labels at short and long distances, calls and a few jump tables;
data sections hold words, references and strings. --loc adds a .loc line every few instructions
(with the compiler's own minimal .debug_info, so that they make the line table). The Thumb file
has the same number of lines and the same shape: instruction for instruction, label for label.
--chain writes instead one section of N branches whose short forms depend on each other;
--alias one chain of N .set aliases.
"""
import random
import sys

REGS = ["r0", "r1", "r2", "r3", "r4", "r5", "r6", "r7", "r8", "r9", "r10", "r11"]
TREGS = ["r0", "r1", "r2", "r3", "r4", "r5", "r6", "r7"]


class Writer:
    def __init__(self, loc):
        self.v = []   # vorp lines
        self.t = []   # thumb lines, one for each vorp line
        self.loc = loc
        self.line_no = 1

    def both(self, vorp, thumb):
        self.v.append(vorp)
        self.t.append(thumb)


def function(w, rnd, index, nfuncs, ninstr):
    name = "f%d" % index
    w.both("\t.cc_top %s.function, %s" % (name, name), "\t@ cc_top %s" % name)
    w.both("\t.globl %s" % name, "\t.globl %s" % name)
    w.both("\t.type %s, @function" % name, "\t.type %s, %%function" % name)
    w.both("\t.align 2", "\t.p2align 1")
    w.both("%s:" % name, "%s:" % name)
    w.both("\tentsp 4", "\tpush {r4, r5, r6, lr}")
    nlabels = max(2, ninstr // 8)
    label_at = sorted(rnd.sample(range(ninstr), nlabels))
    labels = [".L%s_%d" % (name, k) for k in range(nlabels)]
    next_label = 0
    for i in range(ninstr):
        if next_label < nlabels and label_at[next_label] == i:
            w.both("%s:" % labels[next_label], "%s:" % labels[next_label])
            next_label += 1
        if w.loc and i % 3 == 0:
            w.line_no += 1
            w.both("\t.loc 1 %d 0" % w.line_no, "\t.loc 1 %d 0" % w.line_no)
        r = rnd.random()
        a, b, c = rnd.choice(REGS), rnd.choice(REGS), rnd.choice(REGS)
        ta, tb, tc = rnd.choice(TREGS), rnd.choice(TREGS), rnd.choice(TREGS)
        if r < 0.40:
            op = rnd.randrange(8)
            if op == 0:
                w.both("\tadd %s, %s, %s" % (a, b, c), "\tadds %s, %s, %s" % (ta, tb, tc))
            elif op == 1:
                k = rnd.randrange(12)
                w.both("\tadd %s, %s, %d" % (a, b, k), "\tadds %s, %s, #%d" % (ta, tb, k % 8))
            elif op == 2:
                k = rnd.randrange(12)
                w.both("\tsub %s, %s, %d" % (a, b, k), "\tsubs %s, %s, #%d" % (ta, tb, k % 8))
            elif op == 3:
                w.both("\tand %s, %s, %s" % (a, b, c), "\tands %s, %s" % (ta, tb))
            elif op == 4:
                w.both("\tor %s, %s, %s" % (a, b, c), "\torrs %s, %s" % (ta, tb))
            elif op == 5:
                w.both("\teq %s, %s, %s" % (a, b, c), "\tcmp %s, %s" % (ta, tb))
            elif op == 6:
                w.both("\tshl %s, %s, %d" % (a, b, rnd.choice([1, 2, 3, 4, 8, 16])),
                       "\tlsls %s, %s, #%d" % (ta, tb, rnd.choice([1, 2, 3, 4, 8, 16])))
            else:
                w.both("\tmul %s, %s, %s" % (a, b, c), "\tmuls %s, %s, %s" % (ta, tb, ta))
        elif r < 0.55:
            if rnd.random() < 0.6:
                k = rnd.randrange(64)
                w.both("\tldc %s, %d" % (a, k), "\tmovs %s, #%d" % (ta, k))
            else:
                k = rnd.randrange(64, 65536)
                w.both("\tldc %s, %d" % (a, k), "\tmovw %s, #%d" % (ta, k))
        elif r < 0.75:
            op = rnd.randrange(7)
            k = rnd.randrange(12)
            if op == 0:
                w.both("\tldw %s, sp[%d]" % (a, k), "\tldr %s, [sp, #%d]" % (ta, 4 * k))
            elif op == 1:
                w.both("\tstw %s, sp[%d]" % (a, k), "\tstr %s, [sp, #%d]" % (ta, 4 * k))
            elif op == 2:
                w.both("\tldw %s, dp[g%d]" % (a, rnd.randrange(8)), "\tldr %s, [r7, #%d]" % (ta, 4 * k))
            elif op == 3:
                w.both("\tstw %s, dp[g%d]" % (a, rnd.randrange(8)), "\tstr %s, [r7, #%d]" % (ta, 4 * k))
            elif op == 4:
                w.both("\tldw %s, cp[k%d]" % (a, rnd.randrange(8)), "\tldr %s, [r6, #%d]" % (ta, 4 * k))
            elif op == 5:
                w.both("\tldw %s, %s[%s]" % (a, b, c), "\tldr %s, [%s, %s]" % (ta, tb, tc))
            else:
                w.both("\tstw %s, %s[%d]" % (a, b, k), "\tstr %s, [%s, #%d]" % (ta, tb, 4 * k))
        elif r < 0.90:
            # Mostly near targets; one in six far enough for the long forms.
            here = next_label
            if rnd.random() < 0.83:
                target = min(nlabels - 1, max(0, here + rnd.choice([-2, -1, 0, 1, 2])))
            else:
                target = rnd.randrange(nlabels)
            op = rnd.randrange(3)
            if op == 0:
                w.both("\tbt %s, %s" % (a, labels[target]), "\tbne %s" % labels[target])
            elif op == 1:
                w.both("\tbf %s, %s" % (a, labels[target]), "\tbeq %s" % labels[target])
            else:
                w.both("\tbu %s" % labels[target], "\tb %s" % labels[target])
        elif r < 0.982:
            callee = "f%d" % rnd.randrange(nfuncs)
            w.both("\tbl %s" % callee, "\tbl %s" % callee)
        elif r < 0.985:
            t1, t2 = rnd.choice(labels), rnd.choice(labels)
            w.both("\t.jmptable %s, %s" % (t1, t2), "\ttbb [pc, %s]" % tc)
        else:
            w.both("\tnop", "\tnop")
    while next_label < nlabels:
        w.both("%s:" % labels[next_label], "%s:" % labels[next_label])
        next_label += 1
    w.both("\tretsp 4", "\tpop {r4, r5, r6, pc}")
    w.both("\t.size %s, .-%s" % (name, name), "\t.size %s, .-%s" % (name, name))
    w.both("\t.cc_bottom %s.function" % name, "\t@ cc_bottom %s" % name)


def data(w, rnd, nfuncs, nwords):
    w.both("\t.section .dp.data, \"awd\", @progbits", "\t.data")
    w.both("\t.align 4", "\t.p2align 2")
    for g in range(8):
        w.both("g%d:" % g, "g%d:" % g)
        w.both("\t.word %d" % rnd.randrange(1 << 31), "\t.word %d" % rnd.randrange(1 << 31))
    w.both("\t.section .cp.rodata, \"ac\", @progbits", "\t.section .rodata, \"a\"")
    w.both("\t.align 4", "\t.p2align 2")
    for k in range(8):
        w.both("k%d:" % k, "k%d:" % k)
        w.both("\t.word %d" % rnd.randrange(1 << 31), "\t.word %d" % rnd.randrange(1 << 31))
    w.both("\t.section .dp.data, \"awd\", @progbits", "\t.data")
    for i in range(nwords):
        if i % 16 == 0:
            w.both("table%d:" % i, "table%d:" % i)
        if rnd.random() < 0.5:
            f = "f%d" % rnd.randrange(nfuncs)
            w.both("\t.word %s" % f, "\t.word %s" % f)
        elif rnd.random() < 0.5:
            w.both("\t.asciiz \"message %d\\n\"" % i, "\t.asciz \"message %d\\n\"" % i)
        else:
            v = rnd.randrange(1 << 32)
            w.both("\t.word %d" % v, "\t.word %d" % v)
    w.both("\t.text", "\t.text")


def debug_info(w):
    # The compiler's own minimal unit: then the .loc lines make the line table.
    w.v += ["\t.file 1 \"gen.c\"",
            "\t.section .debug_abbrev, \"\", @progbits",
            ".Labbrev:", "\t.uleb128 1, 0x11", "\t.byte 0", "\t.uleb128 0x03, 0x08, 0, 0", "\t.uleb128 0",
            "\t.section .debug_info, \"\", @progbits",
            "\t.long 0x0e", "\t.short 3", "\t.long .Labbrev", "\t.byte 4", "\t.uleb128 1", "\t.asciiz \"gen.c\"",
            "\t.text"]
    w.t += ["\t.file 1 \"gen.c\""] + ["\t@"] * 14


def program(lines, loc):
    rnd = random.Random(20261122)
    w = Writer(loc)
    w.t.append("\t.syntax unified")
    w.v.append("# generated by bench/gen.py")
    w.t.append("\t.thumb")
    w.v.append("\t.text")
    if loc:
        debug_info(w)
    # About one line in ten is data; functions of 20 to 400 instructions.
    per_function = 70
    nfuncs = max(2, int(lines * 0.9) // per_function)
    sizes = [rnd.randrange(20, 120) if rnd.random() < 0.9 else rnd.randrange(200, 400) for _ in range(nfuncs)]
    index = 0
    while len(w.v) < lines * 0.9 and index < 10 * nfuncs:
        function(w, rnd, index, nfuncs, sizes[index % nfuncs])
        index += 1
    # Calls to functions beyond the last one written stay undefined symbols, as in a real unit.
    remaining = max(0, lines - len(w.v) - 60)
    data(w, rnd, index, remaining)
    return w


def chain(n):
    # Each branch jumps over the next one: every short form depends on the one after it.
    v = ["\t.text"]
    for i in range(n):
        v.append("b%d:" % i)
        v.append("\tbu b%d" % min(n, i + 2))
        v.append("\tldc r0, %d" % (i % 60000 + 64))
    v.append("b%d:" % n)
    v.append("\tretsp 0")
    return v


def aliases(n):
    v = ["\t.text", "a0:", "\tnop"]
    for i in range(1, n + 1):
        v.append("\t.set a%d, a%d" % (i, i - 1))
    v.append("\tbl a%d" % n)
    return v


def main(argv):
    if len(argv) < 3:
        sys.stderr.write(__doc__)
        return 2
    lines = int(argv[1])
    out = argv[2]
    thumb = None
    if "--thumb" in argv:
        thumb = argv[argv.index("--thumb") + 1]
    if "--chain" in argv:
        text = chain(lines)
    elif "--alias" in argv:
        text = aliases(lines)
    else:
        w = program(lines, "--loc" in argv)
        text = w.v
        if thumb:
            assert len(w.t) == len(w.v)
            with open(thumb, "w") as f:
                f.write("\n".join(w.t) + "\n")
    with open(out, "w") as f:
        f.write("\n".join(text) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
