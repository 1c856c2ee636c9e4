	.globl f
f:
	nop
	nop
