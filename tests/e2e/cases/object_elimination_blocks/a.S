	.cc_top f.function, f
f:
	nop
	.align 4
	.cc_bottom f.function
	.cc_top g.function
g:
	.cc_bottom g.function
after:
	nop
