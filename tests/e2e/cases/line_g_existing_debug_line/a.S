# -g with a ".debug_line" of the input but no ".debug_info": rows are still generated from the
# code, and the program is appended to the section that is there.
    .section .debug_line, "", @progbits
    .byte 0xAA
    .text
    nop
