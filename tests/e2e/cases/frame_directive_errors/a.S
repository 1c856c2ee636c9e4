    .cfi_sections .debug_frame, .text
    .cfi_offset 1, 4
    .cfi_endproc
    .text
f:
    .cfi_startproc foo
    .cfi_startproc
    .cfi_offset x, 4
    .cfi_def_cfa 1, y
    .cfi_register 1, z
    .cfi_def_cfa_offset w
    .cfi_rel_offset 1, x
    .cfi_adjust_cfa_offset x
    .cfi_personality 256, p
    .cfi_personality -128, p
    .cfi_lsda q, p
    .cfi_lsda -129
    .cfi_personality q
    .section .other, "ax", @progbits
    .cfi_offset 1, 4
    .cfi_remember_state
    .cfi_rel_offset 1, 2
    .text
    .cfi_offset 1, 4
    .cfi_endproc
    .cfi_endproc
    .cfi_restore 1
    .cfi_return_column 1
