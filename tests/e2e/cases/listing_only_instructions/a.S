	nop
	add r0, r1, r2
