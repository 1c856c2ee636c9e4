	.byte 1
	nop
