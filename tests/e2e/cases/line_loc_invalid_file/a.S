# A row naming a file beyond the table is reported; file number 0 passes.
    .section .debug_info, "", @progbits
    .file 1 "a.c"
    .file 1 "a.c"
    .text
    .loc 2 1 0
    nop
    .loc 0 2 0
    nop
    .loc 3 3 0
    nop
