a:
	.jmptable32 a, b
b:
