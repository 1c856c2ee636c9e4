	.cc_top f.function, f
f:
	.section .b, "ax", @progbits
	.cc_top g.function
g:
