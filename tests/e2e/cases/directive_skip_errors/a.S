	.skip 4
	.space 4, 0x1ff
	.skip -1
	.skip sym
	.skip 4, sym
