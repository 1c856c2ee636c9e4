	.file 1 "a.c"
	.text
	.globl f
f:
	.loc 1 3 0
	ldw r0, sp[1]
first_add:
	.loc 1 4 0
	add r4, r5, r6
second_load:
	ldw r1, sp[2]
	.loc 1 5 0
	ldw r2, sp[3]
	.loc 1 6 0
second_add:
	add r7, r8, r9
end:
