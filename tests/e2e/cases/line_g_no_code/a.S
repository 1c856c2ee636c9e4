# -g without instructions in ".text": the unit has no code range but still names the line table.
    .section .data, "aw", @progbits
    .word 1
