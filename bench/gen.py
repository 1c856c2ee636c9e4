#!/usr/bin/env python3
"""Writes a large, compiler-like input for vorp and the equivalent Thumb input for llvm-mc.

usage: gen.py LINES OUT.S [--loc] [--switch] [--thumb OUT.s] [--chain N] [--alias N]
       gen.py LINES OUT.S --data [--as OUT.s]

The output is deterministic: the same arguments always give the same text. Functions sit in
elimination blocks with .globl/.type/.size; the body mix is about 55% ALU and constants, 20% loads
and stores, 15% branches to local labels at short and long distances, calls and a few jump tables;
data sections hold words, references and strings. --loc adds a .loc line every few instructions
(with the compiler's own minimal .debug_info, so that they make the line table). The Thumb file
has the same number of lines and the same shape: instruction for instruction, label for label.
--switch adds to the functions switch statements made into jump tables, one every 40 to 80 lines
of code (case bodies included) or a few lines after the end of a longer switch: a bounds check, a
register branch into the table and the case bodies behind it. Most tables are the compact
.jmptable (2-byte entries, 4 to 32 labels, dense or sparse with a few labels repeated), some
.jmptable32 (4-byte entries, the large ones up to 128 labels); some cases lie beyond the reach of
the short forward branch. The Thumb file does the same with tbh and a table
of halfword offsets.
--chain writes instead one section of N branches whose short forms depend on each other;
--alias one chain of N .set aliases.
--data writes instead a data-heavy unit, as firmware with tables and images: mostly .byte lines
of 16 to 32 values, some .short and .word lines, a few labels and a table of their addresses;
--as writes the same data for the host GNU as (x86-64), line for line.
"""
import random
import sys

# Functions a call may reach across (a few hundred bytes each: well inside a bl's reach).
CALL_WINDOW = 1500

REGS = ["r0", "r1", "r2", "r3", "r4", "r5", "r6", "r7", "r8", "r9", "r10", "r11"]
TREGS = ["r0", "r1", "r2", "r3", "r4", "r5", "r6", "r7"]


class Writer:
    def __init__(self, loc, switch=False):
        self.v = []   # vorp lines
        self.t = []   # thumb lines, one for each vorp line
        self.loc = loc
        self.line_no = 1
        self.switch = switch  # write switch statements with jump tables
        self.nswitch = 0
        self.next_switch = 40

    def both(self, vorp, thumb):
        self.v.append(vorp)
        self.t.append(thumb)


def simple(w, rnd):
    # One instruction of a case body: ALU, constants, loads and stores, no branches.
    a, b, c = rnd.choice(REGS), rnd.choice(REGS), rnd.choice(REGS)
    ta, tb = rnd.choice(TREGS), rnd.choice(TREGS)
    op = rnd.randrange(6)
    k = rnd.randrange(12)
    if op == 0:
        w.both("\tadd %s, %s, %s" % (a, b, c), "\tadds %s, %s, %s" % (ta, tb, ta))
    elif op == 1:
        w.both("\tsub %s, %s, %d" % (a, b, k), "\tsubs %s, %s, #%d" % (ta, tb, k % 8))
    elif op == 2:
        k = rnd.randrange(64) if rnd.random() < 0.6 else rnd.randrange(64, 65536)
        w.both("\tldc %s, %d" % (a, k), ("\tmovs %s, #%d" if k < 64 else "\tmovw %s, #%d") % (ta, k))
    elif op == 3:
        w.both("\tldw %s, sp[%d]" % (a, k), "\tldr %s, [sp, #%d]" % (ta, 4 * k))
    elif op == 4:
        w.both("\tstw %s, dp[g%d]" % (a, rnd.randrange(8)), "\tstr %s, [r7, #%d]" % (ta, 4 * k))
    else:
        k = rnd.choice([1, 2, 3, 4, 8, 16])
        w.both("\tshl %s, %s, %d" % (a, b, k), "\tlsls %s, %s, #%d" % (ta, tb, k))


def switch(w, rnd, name):
    # A switch on r0: bounds check, computed branch into the table, case bodies, the default.
    w.nswitch += 1
    base = ".L%s_sw%d" % (name, w.nswitch)
    default, end = base + "_default", base + "_end"
    r = rnd.random()
    # Sizes 4 to 32 (33 to 128 for the wide ones), the small ones most often.
    n = 4 + int(29 * rnd.random() ** 2)
    if r < 0.05:
        kind, n = "wide", 33 + int(96 * rnd.random() ** 2)  # large: only .jmptable32 takes it
    elif r < 0.15:
        kind = "dense32"  # a small one with 4-byte entries
    elif r < 0.60:
        kind = "dense"
    else:
        kind, n = "sparse", rnd.randrange(4, 33)
    if kind == "sparse":
        # A few case bodies, each for some values; the other values take the default.
        ncases = rnd.randrange(2, 5)
        cases = ["%s_c%d" % (base, k) for k in range(ncases)]
        entries = [rnd.choice(cases) if rnd.random() < 0.5 else default for _ in range(n)]
        for k, case in enumerate(cases):
            entries[rnd.randrange(n)] = case  # every case taken at least once
    else:
        cases = ["%s_c%d" % (base, k) for k in range(n)]
        entries = list(cases)
    directive = ".jmptable" if kind in ("dense", "sparse") else ".jmptable32"
    w.both("\tldc r2, %d" % n, "\tmovs r2, #%d" % n)
    w.both("\tlsu r1, r0, r2", "\tcmp r0, r2")
    w.both("\tbf r1, %s" % default, "\tbhs %s" % default)
    w.both("\tbru r0", "\ttbh [pc, r0, lsl #1]")
    w.both("%s:" % base, "%s:" % base)
    w.both("\t%s %s" % (directive, ", ".join(entries)),
           "\t.short " + ", ".join("(%s-%s)/2" % (e, base) for e in entries))
    # Short bodies keep the first cases near the table; in some switches one long body sends
    # the cases after it out of the reach of the short forward branch (so do the many cases of
    # a large table).
    long_body = rnd.randrange(len(cases)) if rnd.random() < 0.4 else -1
    for k, case in enumerate(cases + [default]):
        w.both("%s:" % case, "%s:" % case)
        length = rnd.randrange(30, 60) if k == long_body else rnd.randrange(1, 4)
        for _ in range(length):
            simple(w, rnd)
        if case != default:
            w.both("\tbu %s" % end, "\tb %s" % end)
    w.both("%s:" % end, "%s:" % end)


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
        if w.switch and len(w.v) >= w.next_switch:
            # The next table 40 to 80 lines after this one, case bodies counted as code, but
            # not straight after the end of a long switch.
            table = len(w.v)
            switch(w, rnd, name)
            w.next_switch = max(table + rnd.randrange(40, 81), len(w.v) + rnd.randrange(8, 20))
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
            # A bl reaches about a million halfwords: in the largest inputs, calls go to functions
            # nearby (smaller inputs keep the choice from all of them, and so their old text).
            if nfuncs <= CALL_WINDOW:
                callee = "f%d" % rnd.randrange(nfuncs)
            else:
                callee = "f%d" % min(nfuncs - 1, max(0, index + rnd.randrange(-CALL_WINDOW // 2, CALL_WINDOW // 2)))
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


def program(lines, loc, switches=False):
    rnd = random.Random(20261122)
    w = Writer(loc, switches)
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


def data_unit(lines):
    # Tables and images: .byte lines of 16 to 32 values, one line in ten .short or .word, a label
    # every 50 to 300 lines, and at the end a table of the labels' addresses.
    rnd = random.Random(20261125)
    v = ["# generated by bench/gen.py", "\t.section .dp.data, \"awd\", @progbits"]
    a = ["# generated by bench/gen.py", "\t.data"]
    names = []
    next_label = 0
    while len(v) < lines - 3 - len(names) // 8:
        if len(v) >= next_label:
            name = "blob%d" % len(names)
            names.append(name)
            v += ["\t.align 4", "%s:" % name]
            a += ["\t.p2align 2", "%s:" % name]
            next_label = len(v) + rnd.randrange(50, 301)
            image = rnd.random() < 0.5  # runs of zeros and ones, as bitmaps have
        r = rnd.random()
        if r < 0.05:
            text = ", ".join(str(x) for x in rnd.choices(range(65536), k=rnd.randrange(8, 17)))
            v.append("\t.short " + text)
            a.append("\t.short " + text)
        elif r < 0.10:
            text = ", ".join(str(rnd.getrandbits(32)) for _ in range(rnd.randrange(4, 9)))
            v.append("\t.word " + text)
            a.append("\t.long " + text)
        else:
            n = rnd.randrange(16, 33)
            raw = rnd.randbytes(n)
            if image:
                raw = bytes(0 if x < 96 else 255 if x > 192 else x for x in raw)
            text = ",".join(str(x) for x in raw)
            v.append("\t.byte " + text)
            a.append("\t.byte " + text)
    v += ["\t.align 4", "blobs:"]
    a += ["\t.p2align 2", "blobs:"]
    for k in range(0, len(names), 8):
        v.append("\t.word " + ", ".join(names[k:k + 8]))
        a.append("\t.long " + ", ".join(names[k:k + 8]))
    return v, a


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
    if "--data" in argv:
        text, gas = data_unit(lines)
        assert len(gas) == len(text)
        if "--as" in argv:
            with open(argv[argv.index("--as") + 1], "w") as f:
                f.write("\n".join(gas) + "\n")
    elif "--chain" in argv:
        text = chain(lines)
    elif "--alias" in argv:
        text = aliases(lines)
    else:
        w = program(lines, "--loc" in argv, "--switch" in argv)
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
