# Both frame sections, ".debug_frame" first. With a personality on one procedure the two share
# an entry in ".debug_frame", which carries no augmentation, and get separate ones in
# ".eh_frame". The label numbers of the second section go on from the first.
    .cfi_sections .debug_frame, .eh_frame
    .text
f:
    .cfi_startproc
    .cfi_personality 0, __personality
    .cfi_lsda 0, lsda_f
    nop
    .cfi_def_cfa_offset 8
    retsp 0
    .cfi_endproc
g:
    .cfi_startproc
    nop
    retsp 0
    .cfi_endproc
# Personality only: the augmentation "zP" declares a size of 0.
h:
    .cfi_startproc
    .cfi_personality 0, __personality
    nop
    .cfi_endproc
