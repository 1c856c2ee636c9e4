# A subprogram whose low_pc is a number, and a variable whose location is not DW_OP_addr
# of a label, get no blocks; the rest of the rewriting goes on.
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
	.long 0x26
	.short 3
	.long .Labbrev
	.byte 4
	.uleb128 1
	.asciiz "a.c"
	.uleb128 2
	.asciiz "f"
	.long 0x100
	.uleb128 3
	.asciiz "v"
	.byte 5
	.byte 0x0c
	.long v
	.uleb128 3
	.asciiz "v"
	.byte 5
	.byte 3
	.long 0x100
	.byte 0
