	.text
start:
	.cc_top f.function, f
	.align 4
f:
	.cc_bottom f.function
	.section .dp.data, "awd", @progbits
	.align 4
d:
