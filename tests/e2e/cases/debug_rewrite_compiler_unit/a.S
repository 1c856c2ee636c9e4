# A compiler's output with its own debug information: functions and a variable in elimination
# blocks, a unit that refers between its entries with ref4 offsets, pubnames and aranges.
	.text
.Ltext_begin:
	.globl	main
	.cc_top main.function, main
main:
	.loc	1 3 0
	add	r0, r1, r2
.Lblock_begin:
	nop
.Lblock_end:
	retsp	0
.Lmain_end:
	.cc_bottom main.function

	.cc_top nested.function, nested
nested:
	retsp	0
	.cc_bottom nested.function

	.globl	helper
	.cc_top helper.function, helper
helper:
	.loc	1 9 0
	nop
	retsp	0
.Lhelper_end:
	.cc_bottom helper.function
.Ltext_end:

	.section .dp.data, "awd", @progbits
	.globl	counter
	.cc_top counter.data, counter
counter:
	.long	0
	.cc_bottom counter.data

	.file	1 "prog.c"

	.section .debug_abbrev, "", @progbits
.Ldebug_abbrev0:
	.uleb128 1, 0x11
	.byte 1
	.uleb128 0x25, 0x08, 0x13, 0x05, 0x03, 0x08, 0x10, 0x06, 0x11, 0x01, 0x12, 0x01, 0, 0
	.uleb128 2, 0x2e
	.byte 1
	.uleb128 0x3f, 0x0c, 0x03, 0x08, 0x3a, 0x0b, 0x49, 0x13, 0x11, 0x01, 0x12, 0x01, 0, 0
	.uleb128 3, 0x24
	.byte 0
	.uleb128 0x03, 0x08, 0x3e, 0x0b, 0x0b, 0x0b, 0, 0
	.uleb128 4, 0x16
	.byte 0
	.uleb128 0x03, 0x08, 0x49, 0x13, 0, 0
	.uleb128 5, 0x34
	.byte 0
	.uleb128 0x03, 0x08, 0x49, 0x13, 0x3f, 0x0c, 0x02, 0x0a, 0, 0
	.uleb128 6, 0x2e
	.byte 0
	.uleb128 0x3f, 0x0c, 0x03, 0x08, 0x3c, 0x0c, 0x49, 0x13, 0, 0
	.uleb128 7, 0x0b
	.byte 1
	.uleb128 0x11, 0x01, 0x12, 0x01, 0, 0
	.uleb128 8, 0x34
	.byte 0
	.uleb128 0x03, 0x08, 0x49, 0x13, 0x02, 0x0a, 0, 0
	.uleb128 9, 0x2e
	.byte 0
	.uleb128 0x03, 0x08, 0x11, 0x01, 0, 0
	.uleb128 0

	.section .debug_info, "", @progbits
.Ldebug_info0:
	.long	0xbc
	.short	3
	.long	.Ldebug_abbrev0
	.byte	4
# DW_TAG_compile_unit
	.uleb128	1
	.asciiz	"vorpcc 1.0"
	.short	1
	.asciiz	"prog.c"
	.long	.Ldebug_line0
	.long	.Ltext_begin
	.long	.Ltext_end
# DW_TAG_base_type int
	.uleb128	3
	.asciiz	"int"
	.byte	5
	.byte	4
# DW_TAG_typedef word -> int
	.uleb128	4
	.asciiz	"word"
	.long	0x2c
# DW_TAG_typedef count_t -> word
	.uleb128	4
	.asciiz	"count_t"
	.long	0x33
# DW_TAG_subprogram main
	.uleb128	2
	.byte	1
	.asciiz	"main"
	.byte	1
	.long	0x2c
	.long	main
	.long	.Lmain_end
#   DW_TAG_lexical_block
	.uleb128	7
	.long	.Lblock_begin
	.long	.Lblock_end
#     DW_TAG_subprogram nested: not a top-level entry
	.uleb128	9
	.asciiz	"nested"
	.long	nested
#     DW_TAG_variable local
	.uleb128	8
	.asciiz	"local"
	.long	0x3d
	.byte	2, 145, 4
	.byte	0
#   end of lexical block children
	.byte	0
# end of main children
# DW_TAG_subprogram helper
	.uleb128	2
	.byte	0
	.asciiz	"helper"
	.byte	1
	.long	0x33
	.long	helper
	.long	.Lhelper_end
	.byte	0
# DW_TAG_variable counter
	.uleb128	5
	.asciiz	"counter"
	.long	0x3d
	.byte	1
	.byte	5
	.byte	3
	.long	counter
# DW_TAG_subprogram declaration: no address, no block
	.uleb128	6
	.byte	1
	.asciiz	"extern_fn"
	.byte	1
	.long	0x2c
	.byte	0
# end of unit children

	.section .debug_line, "", @progbits
.Ldebug_line0:

	.section .debug_pubnames, "", @progbits
	.long	0x22
	.short	2
	.long	.Ldebug_info0
	.long	0xc0
	.long	0x4a
	.asciiz	"main"
	.long	0x83
	.asciiz	"helper"
	.long	0x0

	.section .debug_aranges, "", @progbits
	.long	0x1c
	.short	2
	.long	.Ldebug_info0
	.byte	4, 0
	.short	0, 0
	.long	.Ltext_begin
	.long	.Ltext_end - .Ltext_begin
	.long	0, 0
