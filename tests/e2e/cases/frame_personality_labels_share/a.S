# Two procedures with the same personality encoding but different personality routines land in
# one common entry, which names the routine of the first. An LSDA given alone makes the "zL" form.
    .text
f:
    .cfi_startproc
    .cfi_personality 0, pers_a
    nop
    .cfi_endproc
g:
    .cfi_startproc
    .cfi_personality 0, pers_b
    nop
    .cfi_endproc
h:
    .cfi_startproc
    .cfi_lsda 0, lsda_h
    nop
    .cfi_endproc
# 255 switches the personality off again: back to the plain entry.
k:
    .cfi_startproc
    .cfi_personality 0, pers_a
    .cfi_personality 255
    nop
    .cfi_endproc
