x:
x: y:
	.globl y
	.section .d, "aw", @progbits
y:
