# The compiler wrote ".debug_info" but no line table: the .loc directives become the line
# program. Rows of code in an elimination block get blocks of their own in ".debug_line".
# Line deltas at the edges of the special opcodes: 142 and -100 are special, 143 and -101 not.
    .section .debug_info, "", @progbits
    .file 1 "src/a.c"
    .file 2 "b.h"
    .text
    .cc_top f.function, f
f:
    .loc 1 10 0
    nop
    .loc 1 152 0
    nop
    .loc 1 295 0
    nop
    .loc 1 195 0
    nop
    .loc 1 94 0
    nop
    .loc 2 3 0 is_stmt 0 prologue_end
    nop
    .cc_bottom f.function
    .cc_top g.function, g
g:
    .loc 1 20 0 basic_block epilogue_begin
    nop
    .loc 1 21 0
    retsp 0
    .cc_bottom g.function
