	.text
	.globl f
f:
	ldw r0, sp[1]
	ldw r1, sp[2]
	ldw r2, sp[3]
	add r4, r5, r6
	add r7, r8, r9
