# A procedure still open at the end of the input is refused where it began.
    .text
f:
    .cfi_startproc
    nop
    .cfi_endproc
g:
    .cfi_startproc
    nop
    .section .data2, "aw", @progbits
h:
    .cfi_startproc
    .word 0
