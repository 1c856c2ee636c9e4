	.section .d, "aw", @progbits
	.skip 4
	.space 3, 0x1ff
	.section .b, "aw", @nobits
	.skip 16
