	.text
	.globl f
f:
	ldw r0, sp[1]
	ldw r1, sp[2]
	add r4, r5, r6
	bl g
	ldw r2, sp[3]
	ldw r3, sp[4]
	add r7, r8, r9
	retsp 0
g:
	add r0, r0, 1
	retsp 0
