	.text
	.skip 0x10000000
	nop
	.skip 0x30000000
loop:
	bu loop
