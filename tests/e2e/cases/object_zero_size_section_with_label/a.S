	.section .d, "aw", @progbits
x:
	.section .e, "aw", @progbits
