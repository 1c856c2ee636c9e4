#!/usr/bin/env python3
"""Hostile-input stress campaign for vorp.

Takes seed programs (the end-to-end cases, the bundled example and a few programs written by
bench/gen.py), mutates them in many hostile ways, runs vorp on each mutant under a time limit and
classifies what happened. vorp is meant to be the AddressSanitizer + UndefinedBehaviorSanitizer
build, so that memory and arithmetic faults show up as reports rather than as silent corruption.

A run passes when
  - there is no sanitizer report and no hang (the time limit, 10 s by default);
  - the process was not killed by a signal, except the abort of an allowed internal assertion
    (ALLOWED_ASSERTIONS below), which is counted on its own;
  - the exit status is 0 with an object written and no error reported, or 1 with no object and no
    listing left behind;
  - every line on standard error is a diagnostic in one of the program's forms:
        FILE:LINE: Error: A000NN text      FILE:LINE: Warning: A000NN text
        Error: A000NN text                 Warning: A000NN text
        vorp: text                         (a fatal message of the driver or a pass)
    A line that continues a diagnostic is accepted only where that diagnostic quotes a string of
    the input that itself holds a line end.

Every mutant is derived from (seed, index) alone, so a campaign is reproducible whatever the
number of jobs, and a single failing input can be made again with --only INDEX.

The fixed-seed run of the test suite (see tests/stress/CMakeLists.txt):
    python3 tests/stress/stress.py --vorp build/asan/vorp --count 2000 --seed 1
A long campaign (60000 inputs take about 40 minutes on two cores; --minutes stops it earlier and
the summary says how many were run, --progress reports as it goes); failing inputs are kept in
stress-failures/, and --replay runs them again after a fix:
    python3 tests/stress/stress.py --vorp build/asan/vorp --count 60000 --seed 7 --jobs 2 \\
        --progress 5000 --save stress-failures
"""

import argparse
import collections
import concurrent.futures
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))

# Internal assertions that an input is documented to reach; the abort is the designed outcome.
# Each entry: the asserted expression as the program prints it -> a short name for the tally.
ALLOWED_ASSERTIONS = {
    # A clock division ($CDu, $CDd, $CDe) of two constants: only the linker evaluates those,
    # so folding one at assembly time is an internal error (`.word 7 $CDu 2`).
    '0 && "Unexpected opcode\\n"': "clockdiv-of-constants",
    # An operator the linker records can't express (~, -, <<, >>, &, |, /) on a symbol, beneath
    # another operator: error 28 is printed, then the missing operand aborts the compilation
    # of the outer record (`.word (~x) + 1` with x undefined).
    "sym": "operand-refused-by-linker-records",
    # A conditional nested in the middle branch of another one, without parentheses, in an
    # instruction operand: the re-parse of the tokens finds no `$:` (`ldc r0, 1 ? 2 ? 3 $: 4 $: 5`).
    "m_pos < m_tokens->size() && (*m_tokens)[m_pos]->symbol == S_MINEYMO": "nested-conditional",
    # A source label that holds the stable name ".Ldefined.N" of the line a frame, line-table or
    # timing record needs a label at: the generated name must be new (`.Ldefined.2:` before a
    # `.cfi_startproc`/`nop`/`.cfi_endproc` procedure whose end lands on line 2).
    "m_nameLabelMap.find(label->m_name) == m_nameLabelMap.end()": "stable-name-taken",
}

NUMBERED = re.compile(rb"^(?:.*?:\d+: )?(?:Error|Warning): A\d{5} ")
ERROR_LINE = re.compile(rb"^(?:.*?:\d+: )?Error: A\d{5} ")
FATAL = re.compile(rb"^vorp: ")
ASSERTION = re.compile(rb"Assertion `(.*)' failed\.")
# The messages that quote a string or a character of the input as it stands: a line end in that text
# goes to the output, and the lines after such a message are taken as its continuation.
QUOTING = re.compile(
    rb"^(?:.*?:\d+: )?(?:Error|Warning): A\d{5} (?:Unsupported core |Unsupported core revision |Core revision |"
    rb"Unknown group linkage mode |unknown CFI section |unknown escape sequence |Unrecognised type to section |"
    rb"Unrecognised flag to section |"
    rb"Invalid option for \.loc |Stray |unknown pseudo-op|Unknown opcode |Did you mean |Use of |"
    rb"error opening |error reading )"
)
SANITIZER = re.compile(
    rb"ERROR: (?:Address|Leak|Memory|Thread)Sanitizer|runtime error:|SUMMARY: (?:Address|Undefined|Leak)"
)

SANITIZER_ENV = {
    # The program's own SIGSEGV handler would hide the report: let the sanitizer keep the signal.
    "ASAN_OPTIONS": "detect_leaks=1:allow_user_segv_handler=0:max_allocation_size_mb=1024:"
    "hard_rss_limit_mb=3072:allocator_may_return_null=0",
    "UBSAN_OPTIONS": "print_stacktrace=1:halt_on_error=1",
}

OPTION_SETS = [
    [], [], [], ["-g"], ["-fschedule"], ["-l"], ["-g", "-fschedule"], ["--fatal-warnings"], ["-W"],
    ["--max-encoding-passes", "20"], ["--no-rewrite-debug"], ["--warn-rewrite-debug", "-g"],
]

# ----------------------------------------------------------------------------------------------
# Seeds and dictionary

DIRECTIVES = (
    "align ascii asciiz byte extern file global globl local locl weak ident core corerev int loc "
    "long popsection pushsection section set linkset assert call par globread globwrite "
    "sameresource parwrite globpassesref short skip sleb128 space text uleb128 word type "
    "typestring size jmptable jmptable32 zebbranch zebendpoint zeblabel zebcall zebthreadstart "
    "zebthreadstop zebcommand zebsystem zebloop cc_top cc_bottom scheduling syntax "
    "inline_definition cfi_sections cfi_startproc cfi_endproc cfi_personality cfi_lsda cfi_def_cfa "
    "cfi_def_cfa_register cfi_def_cfa_offset cfi_adjust_cfa_offset cfi_offset cfi_rel_offset "
    "cfi_register cfi_undefined cfi_same_value cfi_remember_state cfi_restore_state "
    "cfi_return_column cfi_restore sassert"
).split()

MNEMONICS = (
    "add sub ldc ldw stw ldaw ldap bl bla bu bt bf brfu brft brbu brbt brfu bru retsp entsp "
    "extsp extdp kentsp krestsp nop lsu lss eq and or xor not neg shl shr ashr mul divu divs remu "
    "rems ld8u ld16s st8 st16 mkmsk zext sext clz byterev getr freer in out setc setd getd "
    "waiteu clre ecallt ecallf tsetr ldwcp ldwdp stwdp stwsp ldwsp ldawdp ldawsp ldawcp lmul "
    "maccu maccs crc32 crc8 ladd lsub ldivu bitrev andnot setsr clrsr getsr getid getst"
).split()

REGISTERS = "r0 r1 r2 r3 r4 r5 r6 r7 r8 r9 r10 r11 cp dp sp lr fx pc r12 r99".split()

OPERATORS = "+ - * / | & ~ << >> < > <= >= ( ) [ ] , : ; ? $: $D $A $M $N $CDu $CDd $CDe = . @ # $".split()

NUMBERS = [
    "0", "1", "-1", "2", "3", "4", "7", "8", "0x7fffffff", "0x80000000", "0xffffffff",
    "0x100000000", "4294967295", "4294967296", "2147483647", "2147483648", "-2147483648",
    "-2147483649", "99999999999999999999999999", "0x40000000", "0x3fffffff", "1073741824",
    "0b101", "0b", "0x", "077", "08", "0xfffffffffffffffffffffff", "'a'", "'\\n'", "''", "'\\x'",
    "'\\777'", "65535", "65536", "-65536", "1048575", "1048576", "-0", "00000000000000000001",
]

BIG_LINES = [
    ".skip 0x40000000", ".space 0x40000000", ".skip 0x40000001", ".skip 0xffffffff",
    ".section .dp.bss, \"awd\", @nobits\n.skip 0x3fffffff\n.word 0", ".skip 0x3ffffffe\n\tnop",
    ".skip -1", ".space -0x40000000", ".skip 0x20000000\n.skip 0x20000000",
    ".align 0x40000000", ".align 0x80000000", ".align 1 << 30", ".align 1 << 31",
    ".skip 0x7fffffff, 1", ".space 1 << 29\n.space 1 << 29\n.space 1 << 29\n.space 1 << 29",
    ".word 0x7fffffff * 4", ".skip 0x10000000\n\tnop\n.skip 0x30000000\n\tbu .",
    ".align 0x20000000\nnop\n.align 0x20000000\nnop\n.align 0x20000000\nnop",
    ".uleb128 0xffffffff", ".sleb128 -0x80000000", ".int 1 << 32", ".short 0x10000",
    ".byte 256, -129", ".jmptable " + " ".join("l%d" % i for i in range(40)),
    ".section .big, \"ax\", @progbits, 0x40000000", ".section .m, \"aM\", @progbits, 0",
]

SECTION_FLAGS = ['"ax"', '"aw"', '"awd"', '"a"', '"axM"', '"aG"', '""', '"zz"', '"\\x01"']


def load_seeds(root, work):
    """The seed texts, as (name, bytes), in a fixed order."""
    seeds = []
    cases = os.path.join(root, "tests", "e2e", "cases")
    if os.path.isdir(cases):
        for case in sorted(os.listdir(cases)):
            path = os.path.join(cases, case, "a.S")
            if os.path.isfile(path):
                with open(path, "rb") as f:
                    seeds.append((case, f.read()))
    example = os.path.join(root, "examples", "blink.S")
    if os.path.isfile(example):
        with open(example, "rb") as f:
            seeds.append(("blink", f.read()))
    gen = os.path.join(root, "bench", "gen.py")
    if os.path.isfile(gen):
        variants = [["120"], ["300"], ["200", "--loc"], ["1", "--chain", "60"], ["1", "--alias", "40"]]
        for n, extra in enumerate(variants):
            out = os.path.join(work, "gen%d.S" % n)
            args = [sys.executable, gen, extra[0], out] + extra[1:]
            if subprocess.run(args, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0:
                with open(out, "rb") as f:
                    seeds.append(("gen%d" % n, f.read()))
    if not seeds:
        seeds.append(("builtin", b"\t.text\nf:\n\tadd r0, r1, 4\n\tbu f\n\t.word f\n"))
    return seeds


# A string runs to its closing quote or, unterminated, to the line end: a quote always starts a
# token, so splitting stays linear (trying every quote of a long unterminated string against the
# rest of the line took hours).
TOKEN = re.compile(rb"[A-Za-z_.$][A-Za-z0-9_.$]*|0[xX][0-9a-fA-F]+|\d+|\"[^\"\\\n]*(?:\\.[^\"\\\n]*)*\"?|\s+|.", re.S)
WORD = re.compile(rb"[A-Za-z_.][A-Za-z0-9_.]*")


def build_dictionary(seeds):
    words = set()
    for _, text in seeds:
        words.update(WORD.findall(text))
    words = sorted(w for w in words if len(w) < 40)
    words += ["." + d for d in DIRECTIVES] + MNEMONICS + REGISTERS + OPERATORS + NUMBERS
    return [w if isinstance(w, bytes) else w.encode() for w in words]


# ----------------------------------------------------------------------------------------------
# Mutations. Each takes (rng, data, ctx) and returns new bytes.

def m_byte_flip(rng, data, ctx):
    if not data:
        return bytes([rng.randrange(256)])
    b = bytearray(data)
    for _ in range(rng.randint(1, 8)):
        i = rng.randrange(len(b))
        b[i] ^= 1 << rng.randrange(8)
    return bytes(b)


INTERESTING_BYTES = b"\x00\xff\x80\x7f\n\r\t\"'\\()[]$#;:,.@?~-+*/|&<>=\x01\x1b"


def m_byte_set(rng, data, ctx):
    b = bytearray(data)
    for _ in range(rng.randint(1, 6)):
        c = INTERESTING_BYTES[rng.randrange(len(INTERESTING_BYTES))]
        if b and rng.random() < 0.6:
            b[rng.randrange(len(b))] = c
        else:
            b.insert(rng.randint(0, len(b)), c)
    return bytes(b)


def tokens(data):
    return TOKEN.findall(data)


def m_token_delete(rng, data, ctx):
    t = tokens(data)
    for _ in range(rng.randint(1, 4)):
        if not t:
            break
        i = rng.randrange(len(t))
        del t[i:i + rng.randint(1, 3)]
    return b"".join(t)


def m_token_insert(rng, data, ctx):
    t = tokens(data)
    for _ in range(rng.randint(1, 5)):
        word = rng.choice(ctx["dictionary"])
        sep = rng.choice([b" ", b"", b", ", b"\n", b"\t"])
        t.insert(rng.randint(0, len(t)), word + sep)
    return b"".join(t)


def m_token_duplicate(rng, data, ctx):
    t = tokens(data)
    if not t:
        return data
    i = rng.randrange(len(t))
    j = min(len(t), i + rng.randint(1, 12))
    t[i:j] = t[i:j] * rng.randint(2, 60)
    return b"".join(t)


def m_token_replace(rng, data, ctx):
    t = tokens(data)
    for _ in range(rng.randint(1, 4)):
        if not t:
            break
        t[rng.randrange(len(t))] = rng.choice(ctx["dictionary"])
    return b"".join(t)


def m_lines(rng, data, ctx):
    lines = data.split(b"\n")
    if len(lines) < 2:
        return data + b"\n" + data
    action = rng.randrange(5)
    if action == 0:
        rng.shuffle(lines)
    elif action == 1:
        i, j = rng.randrange(len(lines)), rng.randrange(len(lines))
        lines[i], lines[j] = lines[j], lines[i]
    elif action == 2:
        i = rng.randrange(len(lines))
        lines[i:i] = [lines[i]] * rng.randint(1, 200)
    elif action == 3:
        i = rng.randrange(len(lines))
        del lines[i:i + rng.randint(1, 10)]
    else:
        k = rng.randint(1, max(1, len(lines) // 3))
        i = rng.randrange(len(lines))
        block = lines[i:i + k]
        rng.shuffle(block)
        lines[i:i + k] = block
    return b"\n".join(lines)


def long_name(rng):
    n = rng.choice([255, 256, 1000, 4096, 65535, 65536, 70000, 300000])
    head = rng.choice([b"x", b"_", b".L", b"r", b"a.b"])
    return head + bytes(rng.choice(b"abcdefghijklmnopqrstuvwxyz0123456789_.") for _ in range(min(n, 64))) * (n // 64 + 1)


def m_long_identifier(rng, data, ctx):
    name = long_name(rng)
    t = tokens(data)
    spots = [i for i, w in enumerate(t) if WORD.fullmatch(w)]
    if spots and rng.random() < 0.6:
        old = t[rng.choice(spots)]
        return data.replace(old, name, rng.randint(1, 3))
    forms = [name + b":\n", b"\t.globl " + name + b"\n", b"\tbl " + name + b"\n", b"\t.word " + name + b"\n",
             b"\t.set " + name + b", 1\n", b"\t." + name + b"\n", name + b"\n", b"\t.section " + name + b"\n",
             b"\t.cc_top " + name + b".function, " + name + b"\n"]
    return insert_line(rng, data, rng.choice(forms))


def insert_line(rng, data, line):
    lines = data.split(b"\n")
    lines.insert(rng.randint(0, len(lines)), line.rstrip(b"\n"))
    return b"\n".join(lines)


def m_long_string(rng, data, ctx):
    n = rng.choice([1000, 65536, 100000, 1000000])
    body = rng.choice([b"a", b"\\n", b"\\377", b"\\x41", b"\\", b"\xc3\xa9", b"\\\""]) * (n // 2)
    directive = rng.choice([b".ascii", b".asciiz", b".file", b".ident", b".core", b".typestring x,",
                            b".section", b".zebcommand", b".cc_top a,", b".assert 1, x,"])
    close = b"" if rng.random() < 0.2 else b"\""
    return insert_line(rng, data, b"\t" + directive + b" \"" + body + close)


def m_long_line(rng, data, ctx):
    n = rng.choice([1000, 10000, 100000])
    kind = rng.randrange(6)
    if kind == 0:
        line = b"\t.word " + b", ".join(b"%d" % rng.randrange(-5, 1 << 20) for _ in range(n))
    elif kind == 1:
        line = b"\t.byte " + b"1+" * n + b"1"
    elif kind == 2:
        line = b"# " + b"x" * (n * 10)
    elif kind == 3:
        line = b"\tnop ; " * n
    elif kind == 4:
        line = b"\t.word " + b"-" * n + b"~" * (n // 2) + b"1"
    else:
        line = b"\tadd r0, r1, " + b",".join([b"r2"] * n)
    return insert_line(rng, data, line)


def m_number(rng, data, ctx):
    t = tokens(data)
    spots = [i for i, w in enumerate(t) if w[:1].isdigit()]
    for _ in range(rng.randint(1, 4)):
        value = rng.choice(NUMBERS).encode()
        if spots:
            t[rng.choice(spots)] = value
        else:
            t.insert(rng.randint(0, len(t)), value)
    return b"".join(t)


def m_big_sizes(rng, data, ctx):
    return insert_line(rng, data, b"\t" + rng.choice(BIG_LINES).encode().replace(b"\n", b"\n\t"))


def m_deep_parens(rng, data, ctx):
    n = rng.choice([50, 500, 5000, 50000, 200000])
    inner = rng.choice([b"1", b"x", b"x - .", b"1 ? 2 $: 3", b"-1", b"$Dfoo"])
    left = b"(" * n
    right = b")" * (n if rng.random() < 0.8 else rng.randrange(n))
    expr = left + inner + right
    form = rng.choice([b"\t.word %s", b"\tldc r0, %s", b"\t.set deep, %s", b"\tadd r0, r1, %s",
                       b"\t.skip %s", b"\t.align %s", b"\tldw r0, sp[%s]", b"x = %s"])
    return insert_line(rng, data, form.replace(b"%s", expr))


def m_nonascii(rng, data, ctx):
    b = bytearray(data)
    pieces = [b"\x00", b"\x00\x00\x00", b"\xff", b"\x80", b"\xc3\xa9", b"\xe2\x82\xac", b"\xf0\x9f\x92\xa9",
              b"\xef\xbb\xbf", b"\r", b"\x0c", b"\x1a", b"\x7f"]
    for _ in range(rng.randint(1, 6)):
        b[rng.randint(0, len(b)):0] = rng.choice(pieces)
    return bytes(b)


def m_truncate(rng, data, ctx):
    if len(data) < 2:
        return data
    cut = rng.randrange(1, len(data))
    out = data[:cut]
    if rng.random() < 0.3:
        out += rng.choice([b"\"abc", b"'", b"(", b"\\", b"/*", b".section \"", b"'\\"])
    return out


def soup_operand(rng, depth=0):
    r = rng.random()
    if r < 0.25:
        return rng.choice(REGISTERS)
    if r < 0.5 or depth > 2:
        return rng.choice(NUMBERS)
    if r < 0.65:
        return rng.choice(["x", "y", "foo", ".", "loop", "data", ".Ltmp"])
    if r < 0.8:
        return "%s %s %s" % (soup_operand(rng, depth + 1), rng.choice(["+", "-", "*", "/", "<<", ">>", "&", "|",
                                                                      "$M", "$A", "$CDu", "<", ">="]),
                             soup_operand(rng, depth + 1))
    if r < 0.9:
        return "%s[%s]" % (rng.choice(REGISTERS), soup_operand(rng, depth + 1))
    return "(%s)" % soup_operand(rng, depth + 1)


def soup_line(rng):
    r = rng.random()
    operands = ", ".join(soup_operand(rng) for _ in range(rng.randint(0, 4)))
    if r < 0.4:
        return "\t%s %s" % (rng.choice(MNEMONICS), operands)
    if r < 0.75:
        d = rng.choice(DIRECTIVES)
        if d in ("section", "pushsection") and rng.random() < 0.7:
            return "\t.%s %s, %s, @%s%s" % (d, rng.choice([".text", ".data", ".dp.bss", ".cp.rodata", ".debug_info",
                                                         ".debug_line", ".zebloop", "x"]),
                                            rng.choice(SECTION_FLAGS), rng.choice(["progbits", "nobits", "note"]),
                                            rng.choice(["", ", 4", ", 0", ", 4, grp, comdat", ", 4, , zz"]))
        if rng.random() < 0.2:
            return '\t.%s "%s"' % (d, rng.choice(["", "x", "tl3b", "a\\nb", "\\x", "%s%n", "1.2.3"]))
        return "\t.%s %s" % (d, operands)
    if r < 0.85:
        return "%s:" % rng.choice(["x", "y", "foo", "loop", "data", ".Ltmp", "1", "f.function"])
    if r < 0.92:
        return "%s = %s" % (rng.choice(["x", "y", "."]), soup_operand(rng))
    return "# %d \"%s\"" % (rng.randint(0, 1 << 31), rng.choice(["a.c", "", "x\\ny"]))


def m_soup(rng, data, ctx):
    lines = [soup_line(rng) for _ in range(rng.randint(1, 40))]
    text = "\n".join(lines).encode()
    if rng.random() < 0.5:
        return text + b"\n"
    return insert_line(rng, data, text)


def m_splice(rng, data, ctx):
    other = rng.choice(ctx["seeds"])[1]
    if not data or not other:
        return data + other
    i = rng.randrange(len(data))
    j = rng.randrange(len(other))
    return data[:i] + other[j:j + rng.randint(1, 2000)] + data[i:]


MUTATIONS = [
    (m_byte_flip, 3), (m_byte_set, 3), (m_token_delete, 3), (m_token_insert, 4), (m_token_duplicate, 2),
    (m_token_replace, 4), (m_lines, 3), (m_long_identifier, 1), (m_long_string, 1), (m_long_line, 1),
    (m_number, 3), (m_big_sizes, 2), (m_deep_parens, 1), (m_nonascii, 2), (m_truncate, 2), (m_soup, 3),
    (m_splice, 1),
]
MUTATION_NAMES = [m.__name__[2:] for m, _ in MUTATIONS]
MUTATION_WEIGHTS = [w for _, w in MUTATIONS]

MAX_INPUT = 8 << 20


def make_input(seed, index, ctx):
    rng = random.Random("%s:%d" % (seed, index))
    name, data = rng.choice(ctx["seeds"])
    applied = []
    for _ in range(rng.choice([1, 1, 1, 2, 2, 3, 4])):
        k = rng.choices(range(len(MUTATIONS)), MUTATION_WEIGHTS)[0]
        data = MUTATIONS[k][0](rng, data, ctx)
        applied.append(MUTATION_NAMES[k])
        if len(data) > MAX_INPUT:
            data = data[:MAX_INPUT]
    options = list(rng.choice(OPTION_SETS))
    return data, options, "%s <- %s" % (name, "+".join(applied))


# ----------------------------------------------------------------------------------------------
# Running and classification

def classify(status, stderr, object_left, listing_left, object_written, data, timed_out):
    """Returns (kind, detail): kind is 'ok', 'allowed' or a failure kind."""
    if timed_out:
        return "hang", ""
    if SANITIZER.search(stderr):
        first = next((l for l in stderr.splitlines() if SANITIZER.search(l)), b"")
        return "sanitizer", first.decode("utf-8", "replace")[:200]
    if status < 0:
        sig = -status
        if sig == signal.SIGABRT:
            m = ASSERTION.search(stderr)
            if m:
                text = m.group(1).decode("utf-8", "replace")
                if text in ALLOWED_ASSERTIONS:
                    return "allowed", ALLOWED_ASSERTIONS[text]
                return "assertion", text
            return "abort", ""
        return "signal", signal.Signals(sig).name if sig in signal.Signals._value2member_map_ else str(sig)
    if status not in (0, 1):
        return "status", str(status)
    lines = stderr.split(b"\n")
    if lines and lines[-1] == b"":
        lines.pop()
    quoting = False
    errors = fatal = 0
    for line in lines:
        if NUMBERED.match(line):
            quoting = QUOTING.match(line) is not None
            if ERROR_LINE.match(line):
                errors += 1
            continue
        if FATAL.match(line):
            quoting = False
            fatal += 1
            continue
        # A message that quotes text of the input (a string, a character) goes on over the line
        # ends in that text.
        if quoting:
            continue
        return "form", line[:200].decode("utf-8", "replace")
    for line in lines:
        if b"An unrecoverable error has occured" in line:
            return "crash", line.decode("utf-8", "replace")[:200]
    if status == 0:
        if errors or fatal:
            return "status", "errors reported, status 0"
        if not object_written:
            return "no-object", "status 0 without an object"
        return "ok", ""
    if object_left:
        return "object-left", ""
    if listing_left:
        return "listing-left", ""
    if not (errors or fatal or b"Warning: " in stderr):
        return "silent", "status 1 without a diagnostic"
    return "ok", ""


def run_one(vorp, workdir, data, options, timeout):
    result = run_once(vorp, workdir, data, options, timeout)
    if result[0][0] == "hang":
        # A loaded machine can stall a short run past the limit: a hang must happen twice.
        result = run_once(vorp, workdir, data, options, timeout)
    return result


def run_once(vorp, workdir, data, options, timeout):
    src = os.path.join(workdir, "in.S")
    obj = os.path.join(workdir, "out.o")
    listing = obj + ".txt"
    for path in (obj, listing):
        if os.path.exists(path):
            os.remove(path)
    with open(src, "wb") as f:
        f.write(data)
    env = dict(os.environ)
    env.update(SANITIZER_ENV)
    proc = subprocess.Popen([vorp] + options + ["in.S", "-o", "out.o"], cwd=workdir, env=env,
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            start_new_session=True)
    timed_out = False
    try:
        _, stderr = proc.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        timed_out = True
        os.killpg(proc.pid, signal.SIGKILL)
        _, stderr = proc.communicate()
    object_exists = os.path.exists(obj)
    listing_exists = os.path.exists(listing)
    return classify(proc.returncode, stderr, object_exists, listing_exists, object_exists, data, timed_out), stderr


def worker(args):
    vorp, seed, indices, ctx, timeout, deadline = args
    results = []
    workdir = tempfile.mkdtemp(prefix="vorp-stress-")
    try:
        for index in indices:
            if deadline is not None and time.time() >= deadline:
                break
            data, options, how = make_input(seed, index, ctx)
            started = time.time()
            (kind, detail), stderr = run_one(vorp, workdir, data, options, timeout)
            elapsed = time.time() - started
            results.append((index, kind, detail, how, options, data if kind not in ("ok", "allowed") else None,
                            stderr if kind not in ("ok", "allowed") else None, elapsed, len(data)))
    finally:
        shutil.rmtree(workdir, ignore_errors=True)
    return results


def replay(vorp, folder, timeout, verbose):
    failed = 0
    workdir = tempfile.mkdtemp(prefix="vorp-stress-")
    try:
        for name in sorted(os.listdir(folder)):
            if not name.endswith(".S"):
                continue
            base = os.path.join(folder, name[:-2])
            with open(base + ".S", "rb") as f:
                data = f.read()
            options = []
            if os.path.exists(base + ".txt"):
                with open(base + ".txt") as f:
                    for line in f:
                        if line.startswith("options:"):
                            options = line.split()[1:]
            (kind, detail), stderr = run_one(vorp, workdir, data, options, timeout)
            print("%-12s %s %s %s" % (kind, name, " ".join(options), detail), flush=True)
            if verbose and kind not in ("ok", "allowed"):
                sys.stdout.write(stderr[-3000:].decode("utf-8", "replace") + "\n")
            failed += kind not in ("ok", "allowed")
    finally:
        shutil.rmtree(workdir, ignore_errors=True)
    return 1 if failed else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vorp", required=True, help="the vorp program (the sanitizer build)")
    parser.add_argument("--root", default=ROOT, help="the source tree, for the seeds")
    parser.add_argument("--count", type=int, default=2000, help="number of inputs")
    parser.add_argument("--start", type=int, default=0, help="index of the first input")
    parser.add_argument("--seed", default="1", help="campaign seed")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--timeout", type=float, default=10.0, help="time limit of one run, in seconds")
    parser.add_argument("--save", help="folder for failing inputs")
    parser.add_argument("--minutes", type=float,
                        help="start no input after this many minutes; the summary counts the inputs run")
    parser.add_argument("--progress", type=int, metavar="N", help="report every N inputs on standard error")
    parser.add_argument("--only", type=int, action="append", help="run just this index (repeatable)")
    parser.add_argument("--write", metavar="INDEX", type=int, help="write input INDEX to standard output and stop")
    parser.add_argument("--replay", metavar="DIR", help="run the inputs kept by --save in DIR again, and stop")
    parser.add_argument("--verbose", action="store_true")
    args = parser.parse_args()

    if args.replay:
        return replay(os.path.abspath(args.vorp), args.replay, args.timeout, args.verbose)

    work = tempfile.mkdtemp(prefix="vorp-stress-seeds-")
    try:
        seeds = load_seeds(args.root, work)
    finally:
        shutil.rmtree(work, ignore_errors=True)
    ctx = {"seeds": seeds, "dictionary": build_dictionary(seeds)}

    if args.write is not None:
        data, options, how = make_input(args.seed, args.write, ctx)
        sys.stderr.write("options: %s\nmutations: %s\n" % (" ".join(options), how))
        sys.stdout.buffer.write(data)
        return 0

    vorp = os.path.abspath(args.vorp)
    indices = args.only or list(range(args.start, args.start + args.count))
    jobs = max(1, args.jobs)
    chunk = max(1, min(50, len(indices) // (jobs * 4) or 1))
    batches = [indices[i:i + chunk] for i in range(0, len(indices), chunk)]

    started = time.time()
    deadline = started + 60 * args.minutes if args.minutes else None
    tally = collections.Counter()
    allowed = collections.Counter()
    failures = []
    slowest = []
    with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
        for results in pool.map(worker, [(vorp, args.seed, b, ctx, args.timeout, deadline)
                                                 for b in batches]):
            before = sum(tally.values())
            for index, kind, detail, how, options, data, stderr, seconds, size in results:
                slowest.append((seconds, index, size, how))
                tally[kind] += 1
                if kind == "allowed":
                    allowed[detail] += 1
                elif kind != "ok":
                    failures.append((index, kind, detail, how, options, data, stderr))
                    print("FAIL %d %s: %s [%s] %s" % (index, kind, detail, " ".join(options), how), flush=True)
                    if args.verbose and stderr:
                        sys.stdout.write(stderr[-3000:].decode("utf-8", "replace") + "\n")
            done = sum(tally.values())
            if args.progress and done // args.progress > before // args.progress:
                sys.stderr.write("%d inputs, %d failures, %.0f s\n" % (done, len(failures), time.time() - started))
                sys.stderr.flush()
    elapsed = time.time() - started

    if args.save and failures:
        os.makedirs(args.save, exist_ok=True)
        for index, kind, detail, how, options, data, stderr in failures:
            base = os.path.join(args.save, "%s-%d" % (args.seed, index))
            with open(base + ".S", "wb") as f:
                f.write(data)
            with open(base + ".stderr", "wb") as f:
                f.write(stderr or b"")
            with open(base + ".txt", "w") as f:
                f.write("kind: %s\ndetail: %s\noptions: %s\nmutations: %s\n" % (kind, detail, " ".join(options), how))

    total = sum(tally.values())
    if total < len(indices):
        print("stopped at the time limit: %d of %d inputs run" % (total, len(indices)))
    print("seed %s: %d inputs from %d seeds in %.0f s: %d passed, %d allowed assertions, %d failures"
          % (args.seed, total, len(seeds), elapsed, tally["ok"], tally["allowed"], len(failures)))
    for name, n in sorted(allowed.items()):
        print("  allowed %-40s %d" % (name, n))
    for kind, n in sorted(tally.items()):
        if kind not in ("ok", "allowed"):
            print("  failure %-40s %d" % (kind, n))
    if args.verbose:
        for seconds, index, size, how in sorted(slowest, reverse=True)[:10]:
            print("  slow    %6.2f s  input %d, %d bytes: %s" % (seconds, index, size, how))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
