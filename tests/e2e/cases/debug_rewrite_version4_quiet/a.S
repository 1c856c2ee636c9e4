# Version 4 units are not read. Without --warn-rewrite-debug nothing is said.
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
	.section .debug_abbrev, "", @progbits
.Labbrev:
	.uleb128 1, 0x11
	.byte 1
	.uleb128 0x03, 0x08, 0, 0
	.uleb128 2, 0x2e
	.byte 0
	.uleb128 0x03, 0x08, 0x11, 0x01, 0, 0
	.uleb128 3, 0x34
	.byte 0
	.uleb128 0x03, 0x08, 0x02, 0x0a, 0, 0
	.uleb128 4, 0x16
	.byte 0
	.uleb128 0x03, 0x08, 0x49, 0x13, 0, 0
	.uleb128 5, 0x16
	.byte 0
	.uleb128 0x03, 0x08, 0x49, 0x15, 0, 0
	.section .debug_info, "", @progbits
	.long 0x0d
	.short 4
	.long .Labbrev
	.byte 4
	.uleb128 1
	.asciiz "a.c"
	.byte 0
