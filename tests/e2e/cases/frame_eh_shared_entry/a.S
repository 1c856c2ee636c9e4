# Two procedures without personality share one common entry in ".eh_frame"; each frame entry
# is in an elimination block predicated on the procedure's first label.
    .text
    .globl f
    .cc_top f.function, f
f:
    .cfi_startproc
    .cfi_def_cfa 14, 0
    add r0, r1, r2
    .cfi_def_cfa_offset 8
    .cfi_offset 15, 4
    nop
    .cfi_offset 64, 8
    .cfi_offset 3, -4
    .cfi_remember_state
    .cfi_register 4, 5
    .cfi_undefined 6
    .cfi_same_value 7
    .cfi_def_cfa_register 12
    nop
    .cfi_restore_state
    retsp 0
    .cfi_endproc
    .cc_bottom f.function

    .globl g
    .cc_top g.function, g
g:
    .cfi_startproc
    nop
    .cfi_def_cfa_offset 16
    retsp 0
    .cfi_endproc
    .cc_bottom g.function
