	.align 4
	.align 3
	.align 0
	.align 8, 0xff
	.align x
	.align 4, y
	.align z, w
