	.text
start:
	nop
	.skip 0x40000000
