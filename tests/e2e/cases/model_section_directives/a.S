	.pushsection .a
	.pushsection .b
	.popsection
	.popsection
	.popsection
	.section m1, "M", @progbits
	.section m2, "M", @progbits, 0
	.section m3, "MS", @progbits
	.section g1, "G", @progbits
	.section g2, "G", @progbits, grp, comdat
	.section g3, "MG", @progbits, 4, grp, .gnu.linkonce
	.section g4, "G", @progbits, grp, odd
