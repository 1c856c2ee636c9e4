# A gap in the file numbers is reported once, and the rows are then not looked at.
    .section .debug_info, "", @progbits
    .file 2 "b.c"
    .text
    .loc 5 1 0
    nop
