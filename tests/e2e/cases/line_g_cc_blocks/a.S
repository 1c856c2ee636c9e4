# -g with code in two elimination blocks: two sequences, each row in a block of its own.
    .text
    .cc_top f.function, f
f:
    nop
    retsp 0
    .cc_bottom f.function
    .cc_top g.function, g
g:
    retsp 0
    .cc_bottom g.function
