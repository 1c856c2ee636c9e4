# Only ".debug_frame" asked for: version 3 entries, a common entry pointer that is a relocated
# reference, and no ".eh_frame".
	.cfi_sections .debug_frame
	.text
f:
	.cfi_startproc
	entsp 2
	.cfi_def_cfa_offset 8
	.cfi_offset 15, 4
	nop
	retsp 2
	.cfi_endproc
g:
	.cfi_startproc
	nop
	.cfi_undefined 15
	retsp 0
	.cfi_endproc
