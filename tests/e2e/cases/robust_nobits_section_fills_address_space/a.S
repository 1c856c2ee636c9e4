	.section .dp.bss, "awd", @nobits
buf:
	.skip 0x3ffffff0
	.align 8
tail:
	.word tail
