a:
	nop
	.jmptable a, b, a
b:
	nop
