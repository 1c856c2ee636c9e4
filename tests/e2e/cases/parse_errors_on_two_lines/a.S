	add r0, r1 r2
	.align 4, )
