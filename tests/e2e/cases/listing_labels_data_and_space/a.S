start:
	nop
	.section .d, "aw", @progbits
d:	.word 1, d+4
	.byte 3
	.asciiz "a\nb"
	.skip 16
