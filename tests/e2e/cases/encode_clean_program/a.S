	.text
f:
	entsp 4
	ldc r0, 1000
	add r1, r0, 3
	ldw r2, sp[1]
loop:
	sub r1, r1, 1
	bt r1, loop
	bl g
	retsp 4
