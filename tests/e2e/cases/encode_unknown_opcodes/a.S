	ADD_2rus r0, r1, 1
	ADD r0, r1, r2
	foo r0
	.syntax architectural
	add r0, r1, r2
	ADDI r0, r1, 1
