	nop
	add r0, r1, 12
	add r0, r1, 13
