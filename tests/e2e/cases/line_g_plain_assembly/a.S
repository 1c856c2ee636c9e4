# -g on plain assembly: a row for every instruction of ".text" and a generated compilation unit
# with the code range. Instructions of other sections get no rows.
    .text
    .globl f
f:
    add r0, r1, r2
    nop

    retsp 0
    .section .other, "ax", @progbits
    nop
