	.section .g1, "axG", @progbits, grp, comdat
	.section .g2, "axG", @progbits, grp
	nop
	.section .h, "awG", @progbits, other
	.word 1
