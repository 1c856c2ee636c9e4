	.text
	.align 0x20000000
	nop
	.align 0x20000000
	nop
	.align 0x20000000
	nop
