# Source written back from an object: format names, labels made up for branches the symbol table
# doesn't name (one lands inside an instruction), a jump table, and data in code.
	.text
	.globl main
main:
	entsp 1
	BRFU_u6 2
	nop
	mov r1, r2
	bru r0
	.jmptable one, two
one:
	ldc r0, 0x1234
	bl printf
two:
	BRBU_lu6 -3
	.short 0xffff
	retsp 1
	.byte 1
