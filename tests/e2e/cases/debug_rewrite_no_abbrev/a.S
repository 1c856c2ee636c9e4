# Without ".debug_abbrev" nothing is rewritten, and nothing is said.
	.text
	.cc_top f.function, f
f:
	retsp 0
	.cc_bottom f.function
	.section .dp.data, "awd", @progbits
	.cc_top v.data, v
v:
	.long 0
	.cc_bottom v.data
	.section .debug_info, "", @progbits
	.long 0x0c
	.short 3
	.long 0
	.byte 4
	.uleb128 1
	.asciiz "a.c"
